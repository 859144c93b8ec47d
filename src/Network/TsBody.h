#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <span>

// The body of a response: a piece of memory that grows with what arrives.
class TsBody {
 public:
  struct Free {
    void operator()(char* bytes) const { std::free(bytes); }
  };
  using Bytes = std::unique_ptr<char, Free>;

  // False, and nothing appended, when there is not enough memory.
  [[nodiscard]] bool Append(std::span<const char> piece) noexcept;

  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] std::span<const char> First(std::size_t count) const { return {bytes_.get(), count}; }

  // Hands the memory over, shrunk to the body's size; nullptr for an empty body.
  [[nodiscard]] Bytes Release() noexcept;

 private:
  [[nodiscard]] bool Resize(std::size_t capacity) noexcept;

  Bytes bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};
