#include "Platform/Linux/Network/Transfers/TransferEngine.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "Platform/Linux/Network/Transfers/BodyDecoder.h"
#include "Platform/Linux/Network/Transfers/Transfer.h"

namespace tessaro::platform {

// ---- Sockets

namespace {

int UvEvents(int curlPoll) {
  return ((curlPoll & CURL_POLL_IN) != 0 ? UV_READABLE : 0) | ((curlPoll & CURL_POLL_OUT) != 0 ? UV_WRITABLE : 0);
}

int CurlEvents(int status, int events) {
  if (status < 0) return CURL_CSELECT_ERR;
  return ((events & UV_READABLE) != 0 ? CURL_CSELECT_IN : 0) | ((events & UV_WRITABLE) != 0 ? CURL_CSELECT_OUT : 0);
}

// Whether the socket is connected to another host; a socket that has been closed isn't.
bool IsConnection(curl_socket_t socket) {
  sockaddr_storage peer{};
  socklen_t length = sizeof peer;
  if (getpeername(socket, reinterpret_cast<sockaddr*>(&peer), &length) != 0) return false;
  return peer.ss_family == AF_INET || peer.ss_family == AF_INET6;
}

}  // namespace

void SocketWatches::Want(curl_socket_t socket, int curlPoll) {
  if (curlPoll == CURL_POLL_REMOVE) return Release(socket);
  Watch& watch = Find(socket);
  watch.wanted = UvEvents(curlPoll);
  // Without a watch the transfer ends by its deadline.
  if (watch.poll && watch.wanted != 0 && watch.wanted != watch.watched) watch.Start(watch.wanted);
}

void SocketWatches::Close(curl_socket_t socket) {
  watches_.erase(socket);
  ::close(socket);
}

SocketWatches::Watch& SocketWatches::Find(curl_socket_t socket) {
  const auto [place, isNew] = watches_.try_emplace(socket);
  Watch& watch = place->second;
  if (isNew) {
    watch.owner = this;
    watch.socket = socket;
    watch.poll = MakeUvHandle<uv_poll_t>(&watch, uv_poll_init_socket, socket);
  }
  return watch;
}

void SocketWatches::Release(curl_socket_t socket) {
  const auto found = watches_.find(socket);
  if (found == watches_.end()) return;
  Watch& watch = found->second;
  watch.wanted = 0;
  watch.isConnection = watch.isConnection || IsConnection(socket);
  if (!watch.isConnection) watches_.erase(found);
}

void SocketWatches::Watch::Start(int events) {
  watched = events;
  uv_poll_start(poll.get(), events,
                [](uv_poll_t* handle, int status, int happened) { OwnerOf<Watch>(handle).Happened(status, happened); });
}

void SocketWatches::Watch::Happened(int status, int events) {
  // libuv has stopped a watch that failed. The watch of an idle connection is stopped here: it mostly reports that the
  // server has hung up, would report that again in every turn, and libcurl notices when it needs the connection again.
  const bool isIdle = wanted == 0;
  if (status < 0 || isIdle) watched = 0;
  if (isIdle) {
    uv_poll_stop(poll.get());
  } else {
    owner->handler_(socket, CurlEvents(status, events));
  }
}

// ---- The engine

namespace {

// More would only wait in the server's queue instead of ours.
constexpr long kMostConnectionsPerHost = 32;
constexpr long kMostStreamsPerConnection = 1000;
constexpr long kMostIdleConnections = 64;
constexpr long kMostRedirects = 16;
constexpr long kReadSize = 256 * 1024;

std::string UserAgent() {
  return std::string(program_invocation_short_name) + " libcurl/" + curl_version_info(CURLVERSION_NOW)->version;
}

void SetCommonOptions(CURL* easy, CURLSH* share, SocketWatches* watches) {
  curl_easy_setopt(easy, CURLOPT_SHARE, share);
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy, CURLOPT_MAXREDIRS, kMostRedirects);
  // Some servers refuse requests without a user agent.
  curl_easy_setopt(easy, CURLOPT_USERAGENT, UserAgent().c_str());
  // libcurl decodes a piece of a body at once, whatever it expands to.
  curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, kBodyCodings);
  curl_easy_setopt(easy, CURLOPT_HTTP_CONTENT_DECODING, 0L);
  curl_easy_setopt(easy, CURLOPT_BUFFERSIZE, kReadSize);
  curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  // libcurl keeps a file of certificates parsed, but not a directory.
  curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
  if (const char* file = std::getenv("SSL_CERT_FILE")) curl_easy_setopt(easy, CURLOPT_CAINFO, file);

  curl_easy_setopt(easy, CURLOPT_CLOSESOCKETDATA, watches);
  curl_easy_setopt(
      easy, CURLOPT_CLOSESOCKETFUNCTION, +[](SocketWatches* closer, curl_socket_t socket) {
        closer->Close(socket);
        return 0;
      });
}

}  // namespace

TransferEngine::TransferEngine()
    : watches_([this](curl_socket_t socket, int events) { Act(socket, events); }),
      timer_(MakeUvHandle<uv_timer_t>(this, uv_timer_init)),
      soon_(MakeUvHandle<uv_idle_t>(this, uv_idle_init)) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  multi_.reset(curl_multi_init());
  share_.reset(curl_share_init());
  Configure();
}

TransferEngine::~TransferEngine() = default;

void TransferEngine::Configure() {
  curl_share_setopt(share_.get(), CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
  CURLM* multi = multi_.get();
  curl_multi_setopt(multi, CURLMOPT_MAX_HOST_CONNECTIONS, kMostConnectionsPerHost);
  curl_multi_setopt(multi, CURLMOPT_MAX_CONCURRENT_STREAMS, kMostStreamsPerConnection);
  curl_multi_setopt(multi, CURLMOPT_MAXCONNECTS, kMostIdleConnections);
  curl_multi_setopt(multi, CURLMOPT_SOCKETDATA, &watches_);
  curl_multi_setopt(
      multi, CURLMOPT_SOCKETFUNCTION, +[](CURL*, curl_socket_t socket, int curlPoll, SocketWatches* watches, void*) {
        watches->Want(socket, curlPoll);
        return 0;
      });
  curl_multi_setopt(multi, CURLMOPT_TIMERDATA, this);
  curl_multi_setopt(
      multi, CURLMOPT_TIMERFUNCTION, +[](CURLM*, long milliseconds, TransferEngine* engine) {
        engine->SetTimer(milliseconds);
        return 0;
      });
}

std::unique_ptr<HTTPTransfer> TransferEngine::Start(const HTTPRequest& request, HTTPTransferClient& client) noexcept {
  return std::make_unique<Transfer>(*this, request, client);
}

void TransferEngine::ShutDown() noexcept {
  multi_.reset();
  watches_.Clear();
  timer_.reset();
  soon_.reset();
}

CurlEasy TransferEngine::MakeEasy() {
  CurlEasy easy(curl_easy_init());
  if (easy) SetCommonOptions(easy.get(), share_.get(), &watches_);
  return easy;
}

void TransferEngine::Add(CURL* easy) {
  if (multi_) curl_multi_add_handle(multi_.get(), easy);
}

void TransferEngine::Remove(CURL* easy) {
  if (multi_) curl_multi_remove_handle(multi_.get(), easy);
}

void TransferEngine::Queue(Transfer& transfer) {
  if (std::exchange(transfer.isQueued, true)) return;
  queue_.push_back(&transfer);
  if (!isActing_) SetTimer(0);
}

void TransferEngine::Withdraw(Transfer& transfer) {
  if (transfer.isQueued) std::erase(queue_, &transfer);
}

void TransferEngine::SetTimer(long milliseconds) {
  if (!timer_ || !soon_) return;
  if (!queue_.empty()) milliseconds = 0;
  isDue_ = isActing_ && milliseconds == 0;
  if (isDue_) return;
  uv_timer_stop(timer_.get());
  uv_idle_stop(soon_.get());
  if (milliseconds < 0) return;
  if (milliseconds == 0) return ActSoon();
  uv_update_time(uv_default_loop());
  uv_timer_start(
      timer_.get(), [](uv_timer_t* handle) { OwnerOf<TransferEngine>(handle).Act(CURL_SOCKET_TIMEOUT, 0); },
      static_cast<std::uint64_t>(milliseconds), 0);
}

// Not with a timer: libuv 1.46 runs one without a delay in the turn of the timer that starts it, so that a fast server
// would hold the loop.
void TransferEngine::ActSoon() {
  uv_idle_start(soon_.get(), [](uv_idle_t* handle) {
    uv_idle_stop(handle);
    OwnerOf<TransferEngine>(handle).Act(CURL_SOCKET_TIMEOUT, 0);
  });
}

void TransferEngine::Act(curl_socket_t socket, int events) {
  isActing_ = true;
  Perform(socket, events);
  DeliverAll();
  // A client mostly makes its next request when one has ended: send that now rather than a turn later.
  if (isDue_) Perform(CURL_SOCKET_TIMEOUT, 0);
  isActing_ = false;
  if (isDue_ || !queue_.empty()) SetTimer(0);
}

void TransferEngine::Perform(curl_socket_t socket, int events) {
  isDue_ = false;
  int running = 0;
  curl_multi_socket_action(multi_.get(), socket, events, &running);
  int queued = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &queued)) {
    if (message->msg != CURLMSG_DONE) continue;
    Transfer* transfer = nullptr;
    curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &transfer);
    transfer->End(message->data.result);
  }
}

// Transfers that a delivery queues wait for the next turn of the loop, so that its other handles have theirs.
void TransferEngine::DeliverAll() {
  for (std::size_t left = queue_.size(); left > 0 && !queue_.empty(); --left) {
    Transfer& transfer = *queue_.front();
    queue_.pop_front();
    transfer.isQueued = false;
    transfer.Deliver();
  }
}

}  // namespace tessaro::platform

tessaro::platform::TransferLibrary* TessaroTransferLibrary() noexcept {
  // Not destroyed: transfers may go later than statics do.
  static auto* const engine = std::make_unique<tessaro::platform::TransferEngine>().release();
  return engine;
}
