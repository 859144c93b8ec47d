#include "Platform/Linux/Updates/Download.h"

#include <algorithm>
#include <utility>

#include "Platform/Common/UpdateAddress.h"

namespace tessaro::platform {

namespace {

constexpr int kMostRedirects = 8;
constexpr int kOk = 200;

}  // namespace

Download::Download(std::string url, std::size_t limit, Done done) : limit_(limit), done_(std::move(done)) {
  Start(std::move(url));
}

void Download::Start(std::string url) {
  transfer_ = HTTPTransfer::Start({.url = std::move(url), .followRedirects = false}, *this);
}

bool Download::Keep(std::span<const char> piece) noexcept {
  isTooLong_ = piece.size() > limit_ - bytes_.size();
  if (!isTooLong_) bytes_.append(piece.data(), piece.size());
  return !isTooLong_;
}

void Download::RefusedRedirect(int, std::string_view location) noexcept {
  std::string target(location);
  if (++redirects_ > kMostRedirects) return End("too many redirects");
  if (!IsTrustworthyAddress(target)) return End("it is redirected to " + target + ", which is not secure");
  bytes_.clear();
  Start(std::move(target));
}

void Download::ReceivedResponse(int statusCode) noexcept {
  if (statusCode != kOk) End("the server answers " + std::to_string(statusCode));
}

void Download::Finished() noexcept { End({}); }

void Download::Failed(std::string_view description) noexcept {
  End(isTooLong_ ? "it is longer than " + std::to_string(limit_) + " bytes" : std::string(description));
}

void Download::End(std::string failure) {
  transfer_.reset();
  // The receiver may destroy this object, and the function with it.
  const Done done = done_;
  done({std::move(bytes_), std::move(failure)});
}

}  // namespace tessaro::platform
