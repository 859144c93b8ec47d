#include "Platform/Linux/Network/Transfers/Transfer.h"

#include <strings.h>
#include <uv.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "Base/TextPieces.h"
#include "Platform/Linux/Network/Transfers/Failure.h"
#include "Platform/Linux/Network/Transfers/RequestSyntax.h"

namespace tessaro::platform {

namespace {

// As long as Cocoa's URL loading waits.
constexpr double kDefaultTimeout = 60;
// The clock's last moment must stay beyond every deadline.
constexpr double kLongestTimeout = 1e9;
// Bytes of a body in one turn of the event loop, so that other work gets its turn.
constexpr std::size_t kMostPerTurn = 1024 * 1024;
// For the client's copies: allocations of this size are reused, larger ones are mapped anew each time, which costs a
// page fault for every 4 KB.
constexpr std::size_t kLongestPiece = 64 * 1024;
constexpr std::size_t kDecodingStep = 64 * 1024;
// Real bodies expand less than fifty times. A small body may expand as it likes.
constexpr std::uint64_t kMostExpansion = 100;
constexpr std::uint64_t kSmallBody = 64 * 1024 * 1024;
constexpr int kSwitchingProtocols = 101;
constexpr long kSeeOther = 303;

std::uint64_t Milliseconds(std::optional<std::chrono::duration<double>> timeout) {
  const double seconds = timeout && timeout->count() > 0 ? timeout->count() : kDefaultTimeout;
  return static_cast<std::uint64_t>(std::ceil(std::min(seconds, kLongestTimeout) * 1000));
}

std::string_view ValueOf(std::string_view headerLine) { return Trimmed(headerLine.substr(headerLine.find(':') + 1)); }

// The codings of a header's list that change the body: libcurl itself undoes "chunked".
void AppendCodings(std::string_view list, std::vector<std::string>& codings) {
  for (const std::string_view piece : Split(list, ',')) {
    std::string coding = LowerCase(Trimmed(piece));
    if (!coding.empty() && coding != "identity" && coding != "chunked") codings.push_back(std::move(coding));
  }
}

}  // namespace

Transfer::Transfer(TransferEngine& engine, const HTTPRequest& request, HTTPTransferClient& client)
    : engine_(engine),
      client_(client),
      url_(request.url),
      method_(request.method),
      followRedirects_(request.followRedirects),
      timeout_(Milliseconds(request.timeout)),
      // The loop's own clock stands still while script runs.
      lastActivity_(uv_hrtime() / 1000000),
      easy_(engine.MakeEasy()) {
  const CURLcode code = easy_ ? Prepare(request) : CURLE_OUT_OF_MEMORY;
  if (code != CURLE_OK) {
    End(code);
    return;
  }
  engine_.Add(easy_.get());
  timer_ = MakeUvHandle<uv_timer_t>(this, uv_timer_init);
  WatchTimeout();
}

Transfer::~Transfer() {
  if (isDestroyed_ != nullptr) *isDestroyed_ = true;
  if (easy_) engine_.Remove(easy_.get());
  engine_.Withdraw(*this);
}

// ---- The request

CURLcode Transfer::Prepare(const HTTPRequest& request) {
  const bool isSecure = StartsWith(url_, "https://");
  if (!isSecure && !StartsWith(url_, "http://")) return CURLE_UNSUPPORTED_PROTOCOL;
  if (HasNul(url_)) return CURLE_URL_MALFORMAT;
  if (!IsToken(method_)) return Refuse("The method can't be sent: " + method_);
  for (const auto& [name, value] : request.headers) {
    if (!IsToken(name) || !IsHeaderValue(value)) return Refuse("The header can't be sent: " + name);
  }

  CURL* easy = easy_.get();
  SetMethod();
  AddHeaders(request);
  curl_easy_setopt(easy, CURLOPT_URL, EncodedURL(url_).c_str());
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers_.get());
  curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, isSecure ? CURL_HTTP_VERSION_2TLS : CURL_HTTP_VERSION_1_1);
  // Rather a stream on the connection that is being made than a connection for each of many requests.
  curl_easy_setopt(easy, CURLOPT_PIPEWAIT, isSecure ? 1L : 0L);
  curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, detail_.data());
  curl_easy_setopt(easy, CURLOPT_PRIVATE, this);
  curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, OnHeader);
  curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, OnBody);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
  return CURLE_OK;
}

CURLcode Transfer::Refuse(std::string_view reason) {
  reason.copy(detail_.data(), detail_.size() - 1);
  return CURLE_BAD_FUNCTION_ARGUMENT;
}

void Transfer::SetMethod() {
  CURL* easy = easy_.get();
  const bool isBuiltIn = method_ == "GET" || method_ == "HEAD" || method_ == "POST";
  if (!isBuiltIn) curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, method_.c_str());
  if (method_ == "HEAD") curl_easy_setopt(easy, CURLOPT_NOBODY, 1L);
  if (!AnnouncesBody(method_)) return;
  curl_easy_setopt(easy, CURLOPT_POST, 1L);
  curl_easy_setopt(easy, CURLOPT_POSTFIELDS, "");
  curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE, 0L);
  // Only POST turns into GET at these two statuses.
  if (!isBuiltIn) curl_easy_setopt(easy, CURLOPT_POSTREDIR, long{CURL_REDIR_POST_301 | CURL_REDIR_POST_302});
}

void Transfer::AddHeaders(const HTTPRequest& request) {
  const auto add = [this](const std::string& line) {
    headers_.reset(curl_slist_append(headers_.release(), line.c_str()));
  };
  bool hasContentType = false;
  for (const auto& [name, value] : request.headers) {
    if (IsFramingHeader(name)) continue;
    hasContentType = hasContentType || strcasecmp(name.c_str(), "content-type") == 0;
    // libcurl's own way of writing a header without a value.
    add(Trimmed(value).empty() ? name + ";" : name + ": " + value);
  }
  // Without a type libcurl would call the empty body a form.
  if (AnnouncesBody(method_) && !hasContentType) add("Content-Type:");
}

// ---- The response's headers

std::size_t Transfer::OnHeader(char* line, std::size_t, std::size_t length, Transfer* self) {
  self->ReceiveHeader({line, length});
  return length;
}

// Lines may also come behind the body, and before another response's.
void Transfer::ReceiveHeader(std::string_view line) {
  NoteActivity();
  if (StartsWith(line, "http/")) return BeginHeaders();
  if (!isInHeaders_) return;
  if (StartsWith(line, "location:")) {
    location_ = ValueOf(line);
  } else if (StartsWith(line, "content-encoding:") || StartsWith(line, "transfer-encoding:")) {
    AppendCodings(ValueOf(line), codings_);
  } else if (Trimmed(line).empty()) {
    isInHeaders_ = false;
    EndHeaders();
  }
}

void Transfer::BeginHeaders() {
  isInHeaders_ = true;
  location_.clear();
  codings_.clear();
  // libcurl would follow every status that has a location, and repeat a method that it doesn't know everywhere.
  long statusCode = 0;
  curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &statusCode);
  curl_easy_setopt(easy_.get(), CURLOPT_FOLLOWLOCATION, followRedirects_ && IsRedirect(statusCode) ? 1L : 0L);
  if (statusCode == kSeeOther) curl_easy_setopt(easy_.get(), CURLOPT_CUSTOMREQUEST, nullptr);
}

void Transfer::EndHeaders() {
  long statusCode = 0;
  curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &statusCode);
  const bool isInterim = statusCode < 200 && statusCode != kSwitchingProtocols;
  const bool isRedirect = IsRedirect(statusCode) && !location_.empty();
  if (isInterim || (isRedirect && followRedirects_)) return;
  isAnswered_ = true;
  pendingResponse_ = {static_cast<int>(statusCode), std::nullopt};
  if (isRedirect) pendingResponse_->refusedRedirect = AbsoluteLocation();
}

std::string Transfer::AbsoluteLocation() const {
  const char* base = nullptr;
  curl_easy_getinfo(easy_.get(), CURLINFO_EFFECTIVE_URL, &base);
  const CurlUrl url(curl_url());
  char* absolute = nullptr;
  const bool isResolved =
      curl_url_set(url.get(), CURLUPART_URL, base, 0) == CURLUE_OK &&
      curl_url_set(url.get(), CURLUPART_URL, location_.c_str(), CURLU_NON_SUPPORT_SCHEME) == CURLUE_OK &&
      curl_url_get(url.get(), CURLUPART_URL, &absolute, 0) == CURLUE_OK;
  const CurlString owner(absolute);
  return isResolved ? absolute : location_;
}

// ---- The response's body

std::size_t Transfer::OnBody(char* bytes, std::size_t, std::size_t length, Transfer* self) {
  self->NoteActivity();
  if (self->IsFull()) {
    self->isPaused_ = true;
    return CURL_WRITEFUNC_PAUSE;
  }
  return self->Receive({bytes, length}) ? length : CURL_WRITEFUNC_ERROR;
}

bool Transfer::IsFull() const { return isDecoding_ || pendingLength_ >= kMostPerTurn; }

bool Transfer::Receive(std::span<const char> piece) {
  if (codings_.empty()) return Keep(piece);
  if (!decoder_ && !MakeDecoder()) return false;
  encodedLength_ += piece.size();
  encoded_.assign(piece.data(), piece.size());
  decodedUpTo_ = 0;
  return Decode();
}

// One coding is enough for every real server, and each further one would multiply the work for a hostile body.
bool Transfer::MakeDecoder() {
  if (codings_.size() > 1) return FailDecoding("The body has more than one content coding");
  decoder_ = MakeBodyDecoder(codings_.front());
  return decoder_ || FailDecoding("Unknown content coding: " + codings_.front());
}

// As much as one turn may bring; the rest follows in the next one.
bool Transfer::Decode() {
  std::array<char, kDecodingStep> room;
  std::span<const char> input = std::span(encoded_).subspan(decodedUpTo_);
  isDecoding_ = true;
  while (isDecoding_ && pendingLength_ < kMostPerTurn) {
    const auto length = decoder_->Decode(input, room);
    if (!length) return FailDecoding("The compressed body is malformed");
    decodedLength_ += *length;
    if (decodedLength_ > std::max(kSmallBody, encodedLength_ * kMostExpansion)) {
      return FailDecoding("The compressed body expands too much");
    }
    if (!Keep({room.data(), *length})) return false;
    isDecoding_ = *length > 0 || !input.empty();
  }
  decodedUpTo_ = encoded_.size() - input.size();
  return true;
}

bool Transfer::FailDecoding(std::string reason) {
  isDecoding_ = false;
  decodingFailure_ = std::move(reason);
  return false;
}

bool Transfer::Keep(std::span<const char> piece) {
  pendingLength_ += piece.size();
  return client_.Keep(piece);
}

// Don't re-arm the timer on every packet; when it fires, check for activity since.
void Transfer::WatchTimeout() {
  const std::uint64_t now = uv_hrtime() / 1000000;
  const std::uint64_t end = lastActivity_ + timeout_;
  if (now >= end) return End(CURLE_OPERATION_TIMEDOUT);
  uv_update_time(uv_default_loop());
  uv_timer_start(
      timer_.get(), [](uv_timer_t* timer) { OwnerOf<Transfer>(timer).WatchTimeout(); }, end - now, 0);
}

void Transfer::NoteActivity() {
  lastActivity_ = uv_now(uv_default_loop());
  engine_.Queue(*this);
}

// ---- The client

void Transfer::Deliver() {
  bool isDestroyed = false;
  isDestroyed_ = &isDestroyed;
  DeliverResponse();
  while (!isDestroyed && pendingLength_ > 0) {
    const std::size_t length = std::min(pendingLength_, kLongestPiece);
    pendingLength_ -= length;
    client_.ReceivedData(length);
  }
  if (isDestroyed) return;
  ContinueReading();
  if (!isDecoding_) DeliverResult();
  if (!isDestroyed) isDestroyed_ = nullptr;
}

void Transfer::DeliverResponse() {
  const auto response = std::exchange(pendingResponse_, std::nullopt);
  if (!response) return;
  const bool* const isDestroyed = isDestroyed_;
  if (response->refusedRedirect) client_.RefusedRedirect(response->statusCode, *response->refusedRedirect);
  if (!*isDestroyed) client_.ReceivedResponse(response->statusCode);
}

void Transfer::ContinueReading() {
  if (isDecoding_) {
    // The server is not silent: it waits until its last piece has been decoded.
    NoteActivity();
    if (!Decode()) End(CURLE_WRITE_ERROR);
  } else if (std::exchange(isPaused_, false) && easy_) {
    const CURLcode code = curl_easy_pause(easy_.get(), CURLPAUSE_CONT);
    if (code != CURLE_OK) End(code);
  }
}

void Transfer::DeliverResult() {
  if (!pendingResult_ || pendingLength_ > 0) return;
  const CURLcode code = *std::exchange(pendingResult_, std::nullopt);
  if (code == CURLE_OK && decoder_ && !decoder_->IsComplete()) {
    static_cast<void>(FailDecoding("The compressed body ends too early"));
  }
  const bool isDecoded = decodingFailure_.empty();
  if (isDecoded && code == CURLE_OK) return client_.Ended({});
  client_.Ended(tl::unexpected(isDecoded ? DescribeFailure(code, url_, detail_.data())
                                         : DescribeFailure(CURLE_BAD_CONTENT_ENCODING, url_, decodingFailure_)));
}

void Transfer::End(CURLcode code) {
  if (easy_) {
    code = ResultFor(code);
    engine_.Remove(easy_.get());
    easy_.reset();
    timer_.reset();
  }
  pendingResult_ = code;
  engine_.Queue(*this);
}

// libcurl has no codes of their own for some responses.
CURLcode Transfer::ResultFor(CURLcode code) const {
  const bool isSent = timer_ != nullptr;
  if (!isSent) return code;
  const bool isOtherProtocol = code == CURLE_UNSUPPORTED_PROTOCOL && RedirectCount() == 0;
  const bool isHeaderTooLong = code == CURLE_OUT_OF_MEMORY;
  if (isOtherProtocol || isHeaderTooLong) return CURLE_WEIRD_SERVER_REPLY;
  if (code != CURLE_OK) return code;
  if (!isAnswered_) return CURLE_GOT_NOTHING;
  return IsCutShort() ? CURLE_PARTIAL_FILE : CURLE_OK;
}

void Transfer::NoteReset() { resetAfter_ = RedirectCount(); }

// libcurl has compared the body with its length, if the server has named one.
bool Transfer::IsCutShort() const {
  curl_off_t length = -1;
  curl_easy_getinfo(easy_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
  return length < 0 && resetAfter_ == RedirectCount();
}

long Transfer::RedirectCount() const {
  long count = 0;
  curl_easy_getinfo(easy_.get(), CURLINFO_REDIRECT_COUNT, &count);
  return count;
}

}  // namespace tessaro::platform
