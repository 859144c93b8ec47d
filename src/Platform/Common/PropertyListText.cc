#include "Platform/Common/PropertyListText.h"

#include <algorithm>

namespace tessaro::platform {

namespace {

constexpr std::size_t kEscapeLength = 6;  // \UXXXX
// No character; the reader takes it for a byte order mark, and drops it together with what follows.
constexpr char16_t kSwappedMark = 0xFFFE;

bool IsHex(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c < 0xDC00; }
bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c < 0xE000; }

bool StartsWithEscape(std::string_view text) {
  return text.size() >= kEscapeLength && text[0] == '\\' && text[1] == 'U' &&
         std::all_of(text.begin() + 2, text.begin() + kEscapeLength, IsHex);
}

// 0 if missing.
char32_t EscapedUnit(std::string_view text) {
  return StartsWithEscape(text) ? static_cast<char32_t>(std::stoul(std::string(text.substr(2, 4)), nullptr, 16)) : 0;
}

void AppendUtf8(std::string& out, char32_t high, char32_t low) {
  const char32_t point = 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
  for (const int shift : {18, 12, 6, 0}) {
    out += static_cast<char>((shift == 18 ? 0xF0 : 0x80) | ((point >> shift) & (shift == 18 ? 0x07 : 0x3F)));
  }
}

}  // namespace

std::optional<std::u16string> EscapedForPropertyList(std::u16string_view text) {
  std::u16string escaped;
  escaped.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (IsHighSurrogate(c) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      escaped += c;
      escaped += text[++i];
    } else if (IsHighSurrogate(c) || IsLowSurrogate(c) || c == kSwappedMark) {
      escaped += u'\uFFFD';
    } else if (text.substr(i).starts_with(u"\\U")) {
      // The reader accepts some other characters as digits too.
      escaped += u"\\U005C";
    } else {
      escaped += c;
    }
  }
  return escaped == text ? std::nullopt : std::optional(std::move(escaped));
}

std::string WithSurrogatesJoined(std::string_view xml) {
  std::string joined;
  joined.reserve(xml.size());
  for (std::size_t i = 0; i < xml.size();) {
    const char32_t high = EscapedUnit(xml.substr(i));
    const char32_t low = IsHighSurrogate(high) ? EscapedUnit(xml.substr(i + kEscapeLength)) : 0;
    if (IsLowSurrogate(low)) {
      AppendUtf8(joined, high, low);
      i += 2 * kEscapeLength;
    } else {
      joined += xml[i++];
    }
  }
  return joined;
}

}  // namespace tessaro::platform
