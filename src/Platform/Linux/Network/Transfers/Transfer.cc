#include "Platform/Linux/Network/Transfers/Transfer.h"

#include <strings.h>
#include <uv.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <utility>

#include "Platform/Linux/Network/Transfers/Failure.h"
#include "Platform/Linux/Network/Transfers/TransferEngine.h"

namespace tessaro::platform {

namespace {

// As long as Cocoa's URL loading waits.
constexpr double kDefaultSilence = 60;
// The clock's last moment must stay beyond every deadline.
constexpr double kLongestSilence = 1e9;
// As long as a server is fast enough, libcurl reads on and on, and nothing else would get a turn.
constexpr std::size_t kMostAtOnce = 1024 * 1024;
// Told in pieces that the client's memory has room for without asking the system.
constexpr std::size_t kLongestPiece = 64 * 1024;
constexpr int kSwitchingProtocols = 101;
constexpr std::string_view kTokenCharacters = "!#$%&'*+-.^_`|~";

std::uint64_t Milliseconds(std::optional<std::chrono::duration<double>> timeout) {
  const double seconds = timeout && timeout->count() > 0 ? timeout->count() : kDefaultSilence;
  return static_cast<std::uint64_t>(std::ceil(std::min(seconds, kLongestSilence) * 1000));
}

bool StartsWith(std::string_view text, std::string_view lowerCasePrefix) {
  return text.size() >= lowerCasePrefix.size() &&
         strncasecmp(text.data(), lowerCasePrefix.data(), lowerCasePrefix.size()) == 0;
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r\n";
  const auto first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

// Methods and header names. Anything else could begin a line of its own in the request.
bool IsToken(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) {
    return std::isalnum(c) != 0 || kTokenCharacters.find(static_cast<char>(c)) != std::string_view::npos;
  });
}

bool IsHeaderValue(std::string_view text) {
  return text.find_first_of(std::string_view("\0\r\n", 3)) == std::string_view::npos;
}

// The address with the bytes beyond ASCII written as ASCII, except in the name of the host, which has its own way.
std::string Encoded(const std::string& url) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto authority = url.find("//") + 2;
  std::string encoded = url.substr(0, url.find_first_of("/?#", authority));
  for (const unsigned char c : url.substr(encoded.size())) {
    if (c < 0x80) {
      encoded += static_cast<char>(c);
    } else {
      encoded.append({'%', kDigits[c >> 4], kDigits[c & 15]});
    }
  }
  return encoded;
}

// These announce a body, if only an empty one: without its length some servers wait for it, and some refuse.
bool AnnouncesBody(std::string_view method) { return method == "POST" || method == "PUT" || method == "PATCH"; }

}  // namespace

Transfer::Transfer(TransferEngine& engine, const HTTPRequest& request, HTTPTransferClient& client)
    : engine_(engine),
      client_(client),
      url_(request.url),
      followRedirects_(request.followRedirects),
      silence_(Milliseconds(request.timeout)),
      // The loop's own clock stands still while script runs.
      lastHeard_(uv_hrtime() / 1000000),
      easy_(engine.TakeEasy()) {
  const CURLcode code = easy_ ? Ask(request) : CURLE_OUT_OF_MEMORY;
  if (code != CURLE_OK) {
    End(code);
    return;
  }
  engine_.LimitSilence(*this);
  engine_.Add(easy_.get());
}

Transfer::~Transfer() {
  if (isDestroyed_ != nullptr) *isDestroyed_ = true;
  if (easy_) engine_.Remove(*this, easy_.get());
  engine_.Forget(*this);
}

CURLcode Transfer::Ask(const HTTPRequest& request) {
  const bool isSecure = StartsWith(url_, "https://");
  if (!isSecure && !StartsWith(url_, "http://")) return CURLE_UNSUPPORTED_PROTOCOL;
  if (url_.find('\0') != std::string::npos) return CURLE_URL_MALFORMAT;
  if (!IsToken(request.method)) return Refuse("The method can't be sent: " + request.method);
  for (const auto& [name, value] : request.headers) {
    if (!IsToken(name) || !IsHeaderValue(value)) return Refuse("The header can't be sent: " + name);
  }

  CURL* easy = easy_.get();
  AskFor(request.method);
  AddHeaders(request);
  curl_easy_setopt(easy, CURLOPT_URL, Encoded(url_).c_str());
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers_.get());
  curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, followRedirects_ ? 1L : 0L);
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

void Transfer::AskFor(const std::string& method) {
  CURL* easy = easy_.get();
  // Undoes the others.
  curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
  const bool isKnown = method == "GET" || method == "HEAD" || method == "POST";
  curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, isKnown ? nullptr : method.c_str());
  if (method == "HEAD") curl_easy_setopt(easy, CURLOPT_NOBODY, 1L);
  if (!AnnouncesBody(method)) return;
  curl_easy_setopt(easy, CURLOPT_POST, 1L);
  curl_easy_setopt(easy, CURLOPT_POSTFIELDS, "");
  curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE, 0L);
}

void Transfer::AddHeaders(const HTTPRequest& request) {
  const auto add = [this](const std::string& line) {
    headers_.reset(curl_slist_append(headers_.release(), line.c_str()));
  };
  bool hasContentType = false;
  for (const auto& [name, value] : request.headers) {
    hasContentType = hasContentType || strcasecmp(name.c_str(), "content-type") == 0;
    // libcurl's own way of writing a header without a value.
    add(Trimmed(value).empty() ? name + ";" : name + ": " + value);
  }
  // Otherwise libcurl would call the body that there isn't a form.
  if (AnnouncesBody(request.method) && !hasContentType) add("Content-Type:");
}

std::size_t Transfer::OnHeader(char* line, std::size_t, std::size_t length, Transfer* self) {
  self->Header({line, length});
  return length;
}

std::size_t Transfer::OnBody(char* bytes, std::size_t, std::size_t length, Transfer* self) {
  self->Heard();
  if (self->MustPause()) {
    self->isPaused_ = true;
    return CURL_WRITEFUNC_PAUSE;
  }
  if (!self->client_.Keep({bytes, length})) return CURL_WRITEFUNC_ERROR;
  self->untoldLength_ += length;
  return length;
}

// What libcurl has in hand while it pauses, it keeps, up to a limit that some compressed bodies would reach.
bool Transfer::MustPause() const { return untoldLength_ >= kMostAtOnce && !isEncoded_; }

void Transfer::Continue() {
  isPaused_ = false;
  curl_easy_pause(easy_.get(), CURLPAUSE_CONT);
}

// Lines may also come behind the body, and before another answer's.
void Transfer::Header(std::string_view line) {
  Heard();
  if (StartsWith(line, "http/")) {
    isInHeaders_ = true;
    location_.clear();
    isEncoded_ = false;
  } else if (StartsWith(line, "location:")) {
    location_ = Trimmed(line.substr(line.find(':') + 1));
  } else if (StartsWith(line, "content-encoding:")) {
    isEncoded_ = true;
  } else if (isInHeaders_ && Trimmed(line).empty()) {
    isInHeaders_ = false;
    HeadersEnded();
  }
}

void Transfer::HeadersEnded() {
  long statusCode = 0;
  curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &statusCode);
  const bool isInterim = statusCode < 200 && statusCode != kSwitchingProtocols;
  const bool isRedirect = statusCode >= 300 && statusCode < 400 && !location_.empty();
  if (isInterim || (isRedirect && followRedirects_)) return;
  isAnswered_ = true;
  curl_off_t length = 0;
  curl_easy_getinfo(easy_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
  if (length > 0 && !isEncoded_) client_.Expect(static_cast<std::uint64_t>(length));
  untoldResponse_ = {static_cast<int>(statusCode), std::nullopt};
  if (isRedirect) untoldResponse_->refusedRedirect = AbsoluteLocation();
}

void Transfer::Heard() {
  lastHeard_ = uv_now(uv_default_loop());
  engine_.Tell(*this);
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

// libcurl takes an answer that ends among its headers for a whole one, and has no code of its own for some others.
CURLcode Transfer::Verdict(CURLcode code) const {
  if (code == CURLE_OK && !isAnswered_) return CURLE_GOT_NOTHING;
  long redirects = 0;
  if (easy_) curl_easy_getinfo(easy_.get(), CURLINFO_REDIRECT_COUNT, &redirects);
  const bool isAsked = deadline != 0;
  return code == CURLE_UNSUPPORTED_PROTOCOL && isAsked && redirects == 0 ? CURLE_WEIRD_SERVER_REPLY : code;
}

void Transfer::End(CURLcode code) {
  result_ = Verdict(code);
  if (easy_) {
    engine_.Remove(*this, easy_.get());
    engine_.GiveEasy(std::move(easy_));
  }
  engine_.Tell(*this);
}

void Transfer::TellClient() {
  bool isDestroyed = false;
  isDestroyed_ = &isDestroyed;
  if (const auto response = std::exchange(untoldResponse_, std::nullopt)) {
    if (response->refusedRedirect) client_.RefusedRedirect(response->statusCode, *response->refusedRedirect);
    if (!isDestroyed) client_.ReceivedResponse(response->statusCode);
  }
  if (isDestroyed) return;
  while (untoldLength_ > 0) {
    const std::size_t length = std::min(untoldLength_, kLongestPiece);
    untoldLength_ -= length;
    client_.ReceivedData(length);
    if (isDestroyed) return;
  }
  if (isPaused_) Continue();
  if (const auto result = std::exchange(result_, std::nullopt)) {
    if (*result == CURLE_OK) {
      client_.Finished();
    } else {
      client_.Failed(DescribeFailure(*result, url_, detail_.data()));
    }
  }
  if (!isDestroyed) isDestroyed_ = nullptr;
}

}  // namespace tessaro::platform
