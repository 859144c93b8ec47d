#include "Network/TsBody.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr std::size_t kInitialCapacity = 1024;

}  // namespace

bool TsBody::Append(std::span<const char> piece) noexcept {
  // memcpy() must not be given null, even for no bytes.
  if (piece.empty()) return true;
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
