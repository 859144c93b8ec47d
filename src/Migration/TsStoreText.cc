#include "Migration/TsStoreText.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>

namespace {

constexpr std::size_t kEscapeLength = 6;

bool IsEscaped(unsigned character) {
  return character < 0x20 || std::string_view("<>&\"'\\").find(static_cast<char>(character)) != std::string_view::npos;
}

// The character whose escape `text` begins with.
std::optional<char> EscapedCharacter(std::string_view text) {
  if (text.size() < kEscapeLength || !text.starts_with("\\u") || text.substr(4, 2) != "00") return std::nullopt;
  std::uint8_t character = 0;
  const auto [end, error] = std::from_chars(text.data() + 2, text.data() + 4, character, 16);
  if (error != std::errc() || end != text.data() + 4 || !IsEscaped(character)) return std::nullopt;
  return static_cast<char>(character);
}

void AppendEscaped(std::string& text, char character) {
  constexpr char kDigits[] = "0123456789abcdef";
  text += {'\\', 'u', kDigits[character >> 4 & 15], kDigits[character & 15], '0', '0'};
}

bool CantStandInXml(char character) {
  return character >= 0 && character < 0x20 && character != '\t' && character != '\n';
}

}  // namespace

std::string TsTextFromStore(std::string_view stored) {
  std::string text;
  while (!stored.empty()) {
    const std::size_t plain = std::min(stored.find('\\'), stored.size());
    text += stored.substr(0, plain);
    stored.remove_prefix(plain);
    if (stored.empty()) break;
    const auto character = EscapedCharacter(stored);
    text += character.value_or(stored.front());
    stored.remove_prefix(character ? kEscapeLength : 1);
  }
  return text;
}

std::string TsTextForStore(std::string_view text) {
  std::string stored;
  stored.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (CantStandInXml(text[i]) || EscapedCharacter(text.substr(i))) {
      AppendEscaped(stored, text[i]);
    } else {
      stored += text[i];
    }
  }
  return stored;
}
