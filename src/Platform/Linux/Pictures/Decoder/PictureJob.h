#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro::platform {

// A job for the decoder program, and its encoding: texts, each ended by a NUL.
struct PictureJob {
  enum class Kind : std::uint8_t { Scale, Preview };

  Kind kind = Kind::Scale;
  int maxWidth = 0;
  int maxHeight = 0;
  int milliseconds = 0;  // after which the decoder ends itself
  std::string source;
  std::string target;

  static constexpr std::size_t kMostBytes = 16384;

  [[nodiscard]] std::string Encoded() const {
    std::string bytes;
    for (const int number : {static_cast<int>(kind), maxWidth, maxHeight, milliseconds}) {
      bytes += std::to_string(number) + '\0';
    }
    return bytes + source + '\0' + target + '\0';
  }

  [[nodiscard]] static std::optional<PictureJob> Decoded(std::string_view bytes) {
    std::vector<std::string> words;
    for (auto end = bytes.find('\0'); end != std::string_view::npos; end = bytes.find('\0')) {
      words.emplace_back(bytes.substr(0, end));
      bytes.remove_prefix(end + 1);
    }
    std::array<int, 4> numbers{};
    if (words.size() != numbers.size() + 2) return std::nullopt;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      std::from_chars(words[i].data(), words[i].data() + words[i].size(), numbers[i]);
    }
    const auto [kind, maxWidth, maxHeight, milliseconds] = numbers;
    return PictureJob{static_cast<Kind>(kind), maxWidth, maxHeight, milliseconds, words[4], words[5]};
  }
};

// The first byte of the reply; the path, or the reason of the failure, follows.
inline constexpr char kPictureWritten = '+';
inline constexpr char kPictureFailed = '-';

}  // namespace tessaro::platform
