#include "Platform/Linux/Updates/Download.h"

#include <utility>

#include "Platform/Common/UpdateDecision.h"

namespace tessaro::platform {

namespace {

constexpr int kMostRedirects = 8;
constexpr int kOk = 200;

}  // namespace

Download::Download(std::string url, std::size_t limit, Done done, Progress progress)
    : limit_(limit), done_(std::move(done)), progress_(std::move(progress)) {
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
  if (++redirects_ > kMostRedirects) return End(Fail("too many redirects"));
  if (!IsTrustworthyAddress(target)) return End(Fail("it is redirected to " + target + ", which is not secure"));
  bytes_.clear();
  Start(std::move(target));
}

void Download::ReceivedResponse(int statusCode) noexcept {
  if (statusCode != kOk) End(Fail(statusCode, "the server answers " + std::to_string(statusCode)));
}

void Download::ReceivedData(std::size_t) noexcept {
  if (progress_) progress_(bytes_.size());
}

void Download::Ended(Result<void> result) noexcept {
  if (result) return End(std::move(bytes_));
  if (isTooLong_) return End(Fail("it is longer than " + std::to_string(limit_) + " bytes"));
  End(tl::unexpected(std::move(result.error())));
}

void Download::End(Result<std::string> contents) {
  transfer_.reset();
  // The callback may destroy this object, and itself with it.
  const Done done = done_;
  done(std::move(contents));
}

}  // namespace tessaro::platform
