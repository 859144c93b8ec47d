#include "Base/TsUnicode.h"

namespace {

constexpr char16_t kReplacement = 0xFFFD;

constexpr bool IsSurrogate(char16_t unit) { return (unit & 0xF800) == 0xD800; }
constexpr bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

char* PutUtf8(char32_t character, char* out) {
  constexpr unsigned char kLeads[] = {0, 0xC0, 0xE0, 0xF0};
  const int continuations = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
  int shift = 6 * continuations;
  *out++ = static_cast<char>(kLeads[continuations] | character >> shift);
  while ((shift -= 6) >= 0) *out++ = static_cast<char>(0x80 | (character >> shift & 0x3F));
  return out;
}

// The character at `index`, which moves behind that character.
char32_t TakeUtf16(std::u16string_view characters, std::size_t& index) {
  const char16_t unit = characters[index++];
  if (IsHighSurrogate(unit) && index < characters.size() && IsLowSurrogate(characters[index])) {
    return 0x10000 + ((unit - 0xD800U) << 10) + (characters[index++] - 0xDC00U);
  }
  return IsSurrogate(unit) ? kReplacement : unit;
}

struct Lead {
  std::size_t continuations;
  unsigned char lowest;  // of the first continuation byte: rules out overlong forms and surrogates
  unsigned char highest;
  char32_t bits;
};

// The continuation bytes that a lead byte allows; none for a byte that can't begin a sequence.
Lead LeadOf(unsigned char byte) {
  if (byte >= 0xC2 && byte <= 0xDF) return {1, 0x80, 0xBF, byte & 0x1FU};
  if (byte == 0xE0) return {2, 0xA0, 0xBF, 0};
  if (byte == 0xED) return {2, 0x80, 0x9F, 0xD};
  if (byte >= 0xE1 && byte <= 0xEF) return {2, 0x80, 0xBF, byte & 0xFU};
  if (byte == 0xF0) return {3, 0x90, 0xBF, 0};
  if (byte >= 0xF1 && byte <= 0xF3) return {3, 0x80, 0xBF, byte & 0x7U};
  if (byte == 0xF4) return {3, 0x80, 0x8F, 4};
  return {0, 0, 0, 0};
}

// One character, or U+FFFD for the longest beginning of one, as the Unicode standard recommends.
char32_t TakeUtf8(std::string_view utf8, std::size_t& index) {
  const auto first = static_cast<unsigned char>(utf8[index++]);
  if (first < 0x80) return first;
  const Lead lead = LeadOf(first);
  if (lead.continuations == 0) return kReplacement;
  char32_t character = lead.bits;
  for (std::size_t i = 0; i < lead.continuations; ++i) {
    if (index == utf8.size()) return kReplacement;
    const auto byte = static_cast<unsigned char>(utf8[index]);
    const bool fits = i == 0 ? byte >= lead.lowest && byte <= lead.highest : IsContinuation(byte);
    if (!fits) return kReplacement;
    character = (character << 6) | (byte & 0x3FU);
    ++index;
  }
  return character;
}

}  // namespace

std::size_t Utf16ToUtf8(std::u16string_view characters, char* out) noexcept {
  char* next = out;
  for (std::size_t index = 0; index < characters.size();) {
    if (characters[index] < 0x80) {
      *next++ = static_cast<char>(characters[index++]);
    } else {
      next = PutUtf8(TakeUtf16(characters, index), next);
    }
  }
  return static_cast<std::size_t>(next - out);
}

std::string Utf16ToUtf8(std::u16string_view characters) {
  std::string utf8(characters.size() * 3, '\0');
  utf8.resize(Utf16ToUtf8(characters, utf8.data()));
  return utf8;
}

std::u16string Utf8ToUtf16(std::string_view utf8) {
  std::u16string characters;
  characters.reserve(utf8.size());
  for (std::size_t index = 0; index < utf8.size();) {
    const char32_t character = TakeUtf8(utf8, index);
    if (character < 0x10000) {
      characters += static_cast<char16_t>(character);
    } else {
      characters += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
      characters += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
    }
  }
  return characters;
}

std::string_view Utf8Prefix(std::string_view utf8, std::size_t most) noexcept {
  if (utf8.size() <= most) return utf8;
  while (most > 0 && IsContinuation(static_cast<unsigned char>(utf8[most]))) --most;
  return utf8.substr(0, most);
}

void ReplaceLoneSurrogates(std::u16string& characters) noexcept {
  for (std::size_t index = 0; index < characters.size();) {
    const std::size_t start = index;
    if (TakeUtf16(characters, index) == kReplacement) characters[start] = kReplacement;
  }
}
