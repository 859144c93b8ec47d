#include "Network/TsNetwork.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace platform = tessaro::platform;

namespace {

constexpr std::size_t kInitialCapacity = 1024;
// A server may never end its body, and engines stop the process for an ArrayBuffer of 4 GiB.
constexpr std::size_t kMostBytes = 1 << 30;

}  // namespace

bool TsBody::Append(std::span<const char> piece) noexcept {
  // memcpy() must not be given null, even for no bytes.
  if (piece.empty()) return true;
  if (piece.size() > kMostBytes - size_) return false;
  if (piece.size() > capacity_ - size_) {
    if (!Resize(std::max({kInitialCapacity, capacity_ * 2, size_ + piece.size()}))) return false;
  }
  std::memcpy(bytes_.get() + size_, piece.data(), piece.size());
  size_ += piece.size();
  return true;
}

TsBody::Bytes TsBody::Release() noexcept {
  if (size_ > 0 && size_ < capacity_ / 2) static_cast<void>(Resize(size_));
  size_ = capacity_ = 0;
  return std::move(bytes_);
}

bool TsBody::Resize(std::size_t capacity) noexcept {
  // realloc() moves large blocks by their page tables, which no container does.
  auto* moved = static_cast<char*>(std::realloc(bytes_.get(), capacity));
  if (moved == nullptr) return false;
  static_cast<void>(bytes_.release());
  bytes_.reset(moved);
  capacity_ = capacity;
  return true;
}

TsNetworkRequest::TsNetworkRequest(platform::HTTPRequest request, TsNetworkRequestListener& listener)
    : request_(std::move(request)), listener_(listener) {}

void TsNetworkRequest::Start() {
  if (!request_) return;
  connection_.reset();
  body_ = {};
  connection_ = platform::HTTPTransfer::Start(*request_, *this);
}

bool TsNetworkRequest::Keep(std::span<const char> piece) noexcept { return body_.Append(piece); }

void TsNetworkRequest::RefusedRedirect(int statusCode, std::string_view location) noexcept {
  listener_.Response(statusCode, location);
}

void TsNetworkRequest::ReceivedResponse(int statusCode) noexcept { listener_.Response(statusCode, std::nullopt); }

// Every listener gets the first bytes of the body, not the latest: only the end has the whole body.
void TsNetworkRequest::ReceivedData(std::size_t length) noexcept { listener_.Data(body_.First(length)); }

void TsNetworkRequest::Ended(Result<void> result) noexcept {
  TsBody body = std::move(body_);
  Clear();
  if (result) {
    listener_.End(std::move(body));
  } else {
    listener_.Error(result.error().message);
  }
}

void TsNetworkRequest::Clear() {
  connection_.reset();
  request_.reset();
  body_ = {};
}
