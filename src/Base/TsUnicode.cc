#include "Base/TsUnicode.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr char16_t kReplacement = 0xFFFD;

// Most text is ASCII: it is looked at and moved in blocks of this size, which the compiler turns into vectors.
constexpr std::size_t kBlock = 16;

constexpr bool IsHighSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool IsLowSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }
constexpr bool IsSurrogate(char16_t unit) { return (unit & 0xF800) == 0xD800; }
constexpr bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

template <typename Unit>
unsigned Combined(const Unit* units, std::size_t count) {
  unsigned all = 0;
  for (std::size_t i = 0; i < count; ++i) all |= units[i];
  return all;
}

// Whether a block has any.
bool HasSurrogate(const char16_t* units) {
  bool found = false;
  for (std::size_t i = 0; i < kBlock; ++i) found |= IsSurrogate(units[i]);
  return found;
}

template <std::size_t block, typename From, typename To>
std::size_t CopyAsciiBlocksOf(const From* from, std::size_t length, To* to) {
  std::size_t done = 0;
  for (; done + block <= length && Combined(from + done, block) < 0x80; done += block) {
    for (std::size_t i = 0; i < block; ++i) to[done + i] = static_cast<To>(from[done + i]);
  }
  return done;
}

// Copies whole blocks of ASCII from the front and returns how many units that were: large blocks for the speed, and
// small ones for the rest.
template <typename From, typename To>
std::size_t CopyAsciiBlocks(const From* from, std::size_t length, To* to) {
  const std::size_t done = CopyAsciiBlocksOf<8 * kBlock>(from, length, to);
  return done + CopyAsciiBlocksOf<kBlock>(from + done, length - done, to + done);
}

char* PutUtf8(char32_t character, char* out) {
  const auto put = [&out](char32_t byte) { *out++ = static_cast<char>(byte); };
  const auto continuation = [&](int shift) { put(0x80 | ((character >> shift) & 0x3F)); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | (character >> 6));
    continuation(0);
  } else if (character < 0x10000) {
    put(0xE0 | (character >> 12));
    continuation(6);
    continuation(0);
  } else {
    put(0xF0 | (character >> 18));
    continuation(12);
    continuation(6);
    continuation(0);
  }
  return out;
}

// The character at `index`, which is moved behind it.
char32_t TakeUtf16(const char16_t* characters, std::size_t length, std::size_t& index) {
  const char16_t unit = characters[index++];
  if (IsHighSurrogate(unit) && index < length && IsLowSurrogate(characters[index])) {
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

// What may follow a byte that begins a sequence of several; no continuations when it can't begin one.
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

bool CopyAscii(std::string_view bytes, std::uint8_t* out) noexcept {
  unsigned all = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) all |= out[i] = static_cast<std::uint8_t>(bytes[i]);
  return all < 0x80;
}

bool FitsLatin1(const char16_t* characters, std::size_t length) noexcept {
  // In steps, so that a long text that does not fit is not read to its end.
  constexpr std::size_t kStep = 1024;
  for (std::size_t done = 0; done < length; done += kStep) {
    if (Combined(characters + done, std::min(kStep, length - done)) > 0xFF) return false;
  }
  return true;
}

void ReplaceLoneSurrogates(char16_t* characters, std::size_t length) noexcept {
  for (std::size_t index = 0; index < length;) {
    if (index + kBlock <= length && !HasSurrogate(characters + index)) {
      index += kBlock;
      continue;
    }
    for (const std::size_t end = std::min(index + kBlock, length); index < end; ++index) {
      if (!IsSurrogate(characters[index])) continue;
      const bool isPair =
          IsHighSurrogate(characters[index]) && index + 1 < length && IsLowSurrogate(characters[index + 1]);
      if (isPair) {
        ++index;
      } else {
        characters[index] = kReplacement;
      }
    }
  }
}

std::size_t Latin1ToUtf8(const std::uint8_t* characters, std::size_t length, char* out) noexcept {
  char* next = out;
  for (std::size_t index = 0; index < length;) {
    const std::size_t copied = CopyAsciiBlocks(characters + index, length - index, next);
    index += copied;
    next += copied;
    for (const std::size_t end = std::min(index + kBlock, length); index < end;)
      next = PutUtf8(characters[index++], next);
  }
  return static_cast<std::size_t>(next - out);
}

std::size_t Utf16ToUtf8(const char16_t* characters, std::size_t length, char* out) noexcept {
  char* next = out;
  for (std::size_t index = 0; index < length;) {
    const std::size_t copied = CopyAsciiBlocks(characters + index, length - index, next);
    index += copied;
    next += copied;
    for (const std::size_t end = std::min(index + kBlock, length); index < end;) {
      next = PutUtf8(TakeUtf16(characters, length, index), next);
    }
  }
  return static_cast<std::size_t>(next - out);
}

std::size_t Utf8ToUtf16(std::string_view utf8, char16_t* out) noexcept {
  char16_t* next = out;
  for (std::size_t index = 0; index < utf8.size();) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(utf8.data());
    const std::size_t copied = CopyAsciiBlocks(bytes + index, utf8.size() - index, next);
    index += copied;
    next += copied;
    for (const std::size_t end = std::min(index + kBlock, utf8.size()); index < end;) {
      const char32_t character = TakeUtf8(utf8, index);
      if (character < 0x10000) {
        *next++ = static_cast<char16_t>(character);
      } else {
        *next++ = static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
        *next++ = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
      }
    }
  }
  return static_cast<std::size_t>(next - out);
}

std::string Latin1ToUtf8(const std::uint8_t* characters, std::size_t length) {
  std::string utf8(length * 2, '\0');
  utf8.resize(Latin1ToUtf8(characters, length, utf8.data()));
  return utf8;
}

std::string Utf16ToUtf8(const char16_t* characters, std::size_t length) {
  std::string utf8(length * 3, '\0');
  utf8.resize(Utf16ToUtf8(characters, length, utf8.data()));
  return utf8;
}

std::u16string Utf8ToUtf16(std::string_view utf8) {
  std::u16string characters(utf8.size(), u'\0');
  characters.resize(Utf8ToUtf16(utf8, characters.data()));
  return characters;
}
