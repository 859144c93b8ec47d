#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

// Texts of protocols, paths and addresses: only ASCII counts, whatever the process's locale.

// The pieces between the separators, empty ones too: one for a text without a separator.
[[nodiscard]] inline std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> pieces;
  for (;;) {
    const std::size_t end = text.find(separator);
    pieces.push_back(text.substr(0, end));
    if (end == text.npos) return pieces;
    text.remove_prefix(end + 1);
  }
}

[[nodiscard]] inline std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r\n";
  const std::size_t first = std::min(text.find_first_not_of(kSpace), text.size());
  return text.substr(first, text.find_last_not_of(kSpace) + 1 - first);
}

[[nodiscard]] inline bool HasNul(std::string_view text) { return text.find('\0') != text.npos; }

[[nodiscard]] constexpr char ToLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

[[nodiscard]] inline std::string LowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), ToLower);
  return lower;
}

// In any letter case of `text`.
[[nodiscard]] inline bool StartsWith(std::string_view text, std::string_view lowerCasePrefix) {
  const auto isSame = [](char expected, char c) { return expected == ToLower(c); };
  return text.size() >= lowerCasePrefix.size() &&
         std::equal(lowerCasePrefix.begin(), lowerCasePrefix.end(), text.begin(), isSame);
}

[[nodiscard]] inline bool IsLetterOrDigit(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// "%2F" for "/".
[[nodiscard]] inline std::string PercentEscape(char c) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  return {'%', kDigits[byte >> 4], kDigits[byte & 15]};
}

// As a part of a URL's query: everything but letters, digits and "-._~" is escaped.
[[nodiscard]] inline std::string PercentEncoded(std::string_view text) {
  constexpr std::string_view kPlain = "-._~";
  std::string encoded;
  for (const char c : text) {
    encoded += IsLetterOrDigit(c) || kPlain.find(c) != kPlain.npos ? std::string(1, c) : PercentEscape(c);
  }
  return encoded;
}
