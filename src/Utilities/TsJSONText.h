#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <string>
#include <string_view>

// The forms of JSON's strings and numbers, in text of any width: Latin-1, UTF-8 or UTF-16.
template <typename Unit>
class TsJSONText {
 public:
  std::basic_string<Unit> text;

  void Put(std::string_view ascii) { Append(ascii.data(), ascii.size()); }
  void Put(char ascii) { text.push_back(static_cast<Unit>(ascii)); }

  template <typename Value>
  void PutNumber(Value value) {
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    Put({digits.data(), static_cast<std::size_t>(end - digits.data())});
  }

  // Each of the characters must fit in a unit.
  template <typename Character>
  void PutQuoted(const Character* characters, std::size_t length) {
    Put('"');
    const Character* const end = characters + length;
    while (characters != end) {
      const Character* plain = FindEscape(characters, end);
      Append(characters, static_cast<std::size_t>(plain - characters));
      characters = plain;
      if (characters != end) Escape(static_cast<char>(*characters++));
    }
    Put('"');
  }

 private:
  template <typename Character>
  static constexpr bool NeedsEscape(Character unit) {
    using Unsigned = std::make_unsigned_t<Character>;
    return static_cast<Unsigned>(unit) < 0x20 || unit == '"' || unit == '\\';
  }

  // The first character to be escaped. Looks at blocks, which the compiler turns into vectors, as most have none.
  template <typename Character>
  static const Character* FindEscape(const Character* characters, const Character* end) {
    constexpr std::ptrdiff_t kBlock = 16;
    for (; end - characters >= kBlock; characters += kBlock) {
      unsigned char found = 0;
      for (std::ptrdiff_t i = 0; i < kBlock; ++i) found |= NeedsEscape(characters[i]);
      if (found != 0) break;
    }
    return std::find_if(characters, end, NeedsEscape<Character>);
  }

  // The letter of a two-character escape, or 0.
  static char ShortEscape(char character) {
    switch (character) {
      case '"':
      case '\\':
        return character;
      case '\b':
        return 'b';
      case '\f':
        return 'f';
      case '\n':
        return 'n';
      case '\r':
        return 'r';
      case '\t':
        return 't';
      default:
        return 0;
    }
  }

  void Escape(char character) {
    constexpr std::string_view kHexDigits = "0123456789abcdef";
    Put('\\');
    if (const char letter = ShortEscape(character)) return Put(letter);
    Put("u00");
    Put(kHexDigits[static_cast<unsigned char>(character) >> 4]);
    Put(kHexDigits[character & 0xF]);
  }

  template <typename Character>
  void Append(const Character* characters, std::size_t length) {
    if constexpr (std::is_same_v<Character, Unit>) {
      text.append(characters, length);
    } else {
      // The string's own way of appending other characters makes a string of them first.
      const std::size_t before = text.size();
      text.resize(before + length);
      std::copy_n(characters, length, text.data() + before);
    }
  }
};
