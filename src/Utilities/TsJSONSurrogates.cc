#include "Utilities/TsJSONSurrogates.h"

#include <charconv>
#include <string_view>

namespace {

constexpr std::size_t kEscapeLength = 6;  // \uXXXX

// The UTF-16 unit of the \u escape that `text` begins with, or -1 when it begins with none.
int EscapedUnit(std::string_view text) {
  if (text.size() < kEscapeLength || text[0] != '\\' || text[1] != 'u') return -1;
  int unit = 0;
  const auto [end, error] = std::from_chars(text.data() + 2, text.data() + kEscapeLength, unit, 16);
  return error == std::errc() && end == text.data() + kEscapeLength ? unit : -1;
}

bool IsHighSurrogate(int unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(int unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

}  // namespace

void TsReplaceLoneEscapedSurrogates(std::string& json) {
  const std::string_view text = json;
  std::size_t place = text.find('\\');
  while (place < text.size()) {
    const int unit = EscapedUnit(text.substr(place));
    std::size_t length = unit < 0 ? 2 : kEscapeLength;
    if (IsHighSurrogate(unit) && IsLowSurrogate(EscapedUnit(text.substr(place + kEscapeLength)))) {
      length = 2 * kEscapeLength;
    } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) {
      json.replace(place, kEscapeLength, "\\ufffd");
    }
    place = text.find('\\', place + length);
  }
}
