#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro::platform {

// What the program beside the module is asked to do, and how it is said: texts, each ended by a NUL.
struct PictureJob {
  enum class Kind : std::uint8_t { Scale, Preview };

  Kind kind = Kind::Scale;
  int maxWidth = 0;
  int maxHeight = 0;
  std::string source;
  std::string target;

  static constexpr std::size_t kMostBytes = 16384;

  [[nodiscard]] std::string Encoded() const {
    std::string bytes;
    for (const int number : {static_cast<int>(kind), maxWidth, maxHeight}) bytes += std::to_string(number) + '\0';
    return bytes + source + '\0' + target + '\0';
  }

  [[nodiscard]] static std::optional<PictureJob> Decoded(std::string_view bytes) {
    std::vector<std::string> words;
    for (auto end = bytes.find('\0'); end != std::string_view::npos; end = bytes.find('\0')) {
      words.emplace_back(bytes.substr(0, end));
      bytes.remove_prefix(end + 1);
    }
    if (words.size() != 5) return std::nullopt;
    std::array<int, 3> numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      std::from_chars(words[i].data(), words[i].data() + words[i].size(), numbers[i]);
    }
    return PictureJob{numbers[0] == static_cast<int>(Kind::Preview) ? Kind::Preview : Kind::Scale, numbers[1],
                      numbers[2], words[3], words[4]};
  }
};

// The answer's first byte; the path or the reason follows.
inline constexpr char kPictureWritten = '+';
inline constexpr char kPictureFailed = '-';

}  // namespace tessaro::platform
