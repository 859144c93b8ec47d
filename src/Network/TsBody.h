#pragma once

#include <cstddef>
#include <cstdint>
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

  // Makes room for a body of that size, which may turn out to be shorter or longer. The system gives the memory only
  // as it is filled.
  void Expect(std::uint64_t size) noexcept;

  // False, and nothing appended, when there is not enough memory.
  [[nodiscard]] bool Append(std::span<const char> piece) noexcept;

  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] std::span<const char> First(std::size_t count) const { return {bytes_.get(), count}; }

  // Gives the memory up, cut to what is in it; nullptr for an empty body.
  [[nodiscard]] Bytes Leave() noexcept;

 private:
  [[nodiscard]] bool Resize(std::size_t capacity) noexcept;

  Bytes bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};
