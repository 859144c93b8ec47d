#pragma once

#include <cstddef>
#include <string_view>

// The text of an address header, in whatever encoding has one unit for each of the characters that matter here.

template <typename Character>
struct RecipientPiece {
  std::basic_string_view<Character> address;
  // Empty for none.
  std::basic_string_view<Character> name;
};

// Space, tab, and the other separators of words; line ends are none.
constexpr bool IsWhitespace(char16_t character) {
  return character == ' ' || character == '\t' || character == 0xA0 || character == 0x1680 ||
         (character >= 0x2000 && character <= 0x200A) || character == 0x202F || character == 0x205F ||
         character == 0x3000;
}

constexpr char16_t Unit(char latin1) { return static_cast<unsigned char>(latin1); }
constexpr char16_t Unit(char16_t utf16) { return utf16; }

template <typename Character>
std::basic_string_view<Character> Trimmed(std::basic_string_view<Character> text) {
  while (!text.empty() && IsWhitespace(Unit(text.front()))) text.remove_prefix(1);
  while (!text.empty() && IsWhitespace(Unit(text.back()))) text.remove_suffix(1);
  return text;
}

// `piece` as "name <address>" or, without the brackets in this order, as an address alone, untrimmed.
template <typename Character>
RecipientPiece<Character> ParseRecipient(std::basic_string_view<Character> piece) {
  constexpr auto kNowhere = std::basic_string_view<Character>::npos;
  const std::size_t open = piece.find(Character('<'));
  const std::size_t close = piece.find(Character('>'));
  if (open == kNowhere || close == kNowhere || close < open) return {piece, {}};
  return {piece.substr(open + 1, close - open - 1), Trimmed(piece.substr(0, open))};
}

// Calls `take` for each piece between commas that is not empty. Quotes don't protect a comma.
template <typename Character, typename Take>
void ForEachRecipient(std::basic_string_view<Character> text, const Take& take) {
  while (!text.empty()) {
    const std::size_t comma = text.find(Character(','));
    const auto piece = text.substr(0, comma);
    if (!piece.empty()) take(ParseRecipient(piece));
    if (comma == std::basic_string_view<Character>::npos) return;
    text.remove_prefix(comma + 1);
  }
}
