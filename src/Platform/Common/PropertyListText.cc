#include "Platform/Common/PropertyListText.h"

#include <algorithm>

#include "Base/TsUnicode.h"

namespace tessaro::platform {

namespace {

constexpr std::size_t kEscapeLength = 6;  // \UXXXX
// No character; the reader takes it for a byte order mark, and drops it together with what follows.
constexpr char16_t kSwappedMark = 0xFFFE;

bool IsHex(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

bool StartsWithEscape(std::string_view text) {
  return text.size() >= kEscapeLength && text[0] == '\\' && text[1] == 'U' &&
         std::all_of(text.begin() + 2, text.begin() + kEscapeLength, IsHex);
}

// 0 if missing.
char16_t EscapedUnit(std::string_view text) {
  return StartsWithEscape(text) ? static_cast<char16_t>(std::stoul(std::string(text.substr(2, 4)), nullptr, 16)) : 0;
}

}  // namespace

std::optional<std::u16string> EscapedForPropertyList(std::u16string_view text) {
  std::u16string kept(text);
  ReplaceLoneSurrogates(kept);
  std::replace(kept.begin(), kept.end(), kSwappedMark, u'\uFFFD');
  std::u16string escaped;
  escaped.reserve(kept.size());
  for (std::size_t i = 0; i < kept.size(); ++i) {
    // The reader accepts some other characters as digits too.
    const bool isEscape = kept[i] == '\\' && i + 1 < kept.size() && kept[i + 1] == 'U';
    escaped += isEscape ? u"\\U005C" : std::u16string(1, kept[i]);
  }
  return escaped == text ? std::nullopt : std::optional(std::move(escaped));
}

std::string WithSurrogatesJoined(std::string_view xml) {
  std::string joined;
  joined.reserve(xml.size());
  for (std::size_t i = 0; i < xml.size();) {
    const char16_t pair[] = {EscapedUnit(xml.substr(i)),
                             EscapedUnit(xml.substr(std::min(i + kEscapeLength, xml.size())))};
    if (IsHighSurrogate(pair[0]) && IsLowSurrogate(pair[1])) {
      joined += Utf16ToUtf8({pair, 2});
      i += 2 * kEscapeLength;
    } else {
      joined += xml[i++];
    }
  }
  return joined;
}

}  // namespace tessaro::platform
