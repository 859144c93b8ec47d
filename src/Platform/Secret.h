#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

namespace tessaro::platform {

// Bytes that are overwritten when they are freed, NUL characters included.
class Secret {
 public:
  Secret() = default;

  // Room for `capacity` bytes that the caller writes to Data().
  explicit Secret(std::size_t capacity)
      : bytes_(std::make_unique<char[]>(capacity)), capacity_(capacity), size_(capacity) {}

  explicit Secret(std::string_view bytes) : Secret(bytes.size()) { bytes.copy(Data(), bytes.size()); }

  Secret(Secret&& other) noexcept
      : bytes_(std::move(other.bytes_)),
        capacity_(std::exchange(other.capacity_, 0)),
        size_(std::exchange(other.size_, 0)) {}

  Secret& operator=(Secret&& other) noexcept {
    std::swap(bytes_, other.bytes_);
    std::swap(capacity_, other.capacity_);
    std::swap(size_, other.size_);
    return *this;
  }

  ~Secret() {
    // Volatile: the compiler would drop writes that are never read.
    volatile char* bytes = bytes_.get();
    for (std::size_t i = 0; i < capacity_; ++i) bytes[i] = 0;
  }

  [[nodiscard]] char* Data() { return bytes_.get(); }
  [[nodiscard]] std::string_view View() const { return {bytes_.get(), size_}; }

  // Drops everything after the first `size` bytes.
  void Shorten(std::size_t size) { size_ = size; }

 private:
  std::unique_ptr<char[]> bytes_;
  std::size_t capacity_ = 0;
  std::size_t size_ = 0;
};

}  // namespace tessaro::platform
