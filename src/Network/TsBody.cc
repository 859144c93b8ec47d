#include "Network/TsBody.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "Platform/LargePages.h"

namespace {

constexpr std::size_t kInitialCapacity = 1024;
constexpr std::size_t kLargePage = 2 * 1024 * 1024;

}  // namespace

void TsBody::Expect(std::uint64_t size) noexcept {
  // Smaller ones grow fast enough; larger ones than there is memory are not believed.
  if (size < 2 * kLargePage || size > SIZE_MAX - kLargePage || size_ > 0) return;
  const std::size_t capacity = (size + kLargePage - 1) / kLargePage * kLargePage;
  auto* reserved = static_cast<char*>(std::aligned_alloc(kLargePage, capacity));
  if (reserved == nullptr) return;
  tessaro::platform::PreferLargePages(reserved, capacity);
  bytes_.reset(reserved);
  capacity_ = capacity;
}

bool TsBody::Append(std::span<const char> piece) noexcept {
  if (piece.size() > capacity_ - size_) {
    if (!Resize(std::max({kInitialCapacity, capacity_ * 2, size_ + piece.size()}))) return false;
  }
  std::memcpy(bytes_.get() + size_, piece.data(), piece.size());
  size_ += piece.size();
  return true;
}

TsBody::Bytes TsBody::Leave() noexcept {
  if (size_ < capacity_ / 2) static_cast<void>(Resize(size_));
  size_ = capacity_ = 0;
  return std::move(bytes_);
}

bool TsBody::Resize(std::size_t capacity) noexcept {
  // realloc() moves large blocks by their page tables, which no container does.
  auto* moved = static_cast<char*>(std::realloc(bytes_.get(), capacity));
  if (moved == nullptr) return capacity == 0;
  static_cast<void>(bytes_.release());
  bytes_.reset(moved);
  capacity_ = capacity;
  return true;
}
