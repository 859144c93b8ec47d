#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace tessaro::platform {

// Undoes the content coding of a body step by step, because a few kilobytes can expand to gigabytes.
class BodyDecoder {
 public:
  virtual ~BodyDecoder() = default;

  // Decodes the beginning of `input`, takes that part off, and returns how many bytes of `room` have been filled: zero
  // when more input is needed. Nothing for malformed input.
  [[nodiscard]] virtual std::optional<std::size_t> Decode(std::span<const char>& input, std::span<char> room) = 0;

  // Whether the coded data has reached its end.
  [[nodiscard]] virtual bool IsComplete() const = 0;
};

// The codings that MakeBodyDecoder() knows, as a request offers them.
inline constexpr char kBodyCodings[] = "gzip, deflate, br";

// nullptr for an unknown coding.
[[nodiscard]] std::unique_ptr<BodyDecoder> MakeBodyDecoder(std::string_view coding);

}  // namespace tessaro::platform
