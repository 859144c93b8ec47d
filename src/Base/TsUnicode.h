#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Conversions between UTF-8 and UTF-16. The result is always well-formed: a lone surrogate or a malformed sequence
// becomes U+FFFD.

[[nodiscard]] std::string Utf16ToUtf8(std::u16string_view characters);
[[nodiscard]] std::u16string Utf8ToUtf16(std::string_view utf8);

// The beginning of the text that has at most `most` bytes and ends with a whole character.
[[nodiscard]] std::string_view Utf8Prefix(std::string_view utf8, std::size_t most) noexcept;

// Writes to `out`, which has room for 3 bytes a unit, and returns the number of bytes written.
std::size_t Utf16ToUtf8(std::u16string_view characters, char* out) noexcept;

// The first and the second unit of a surrogate pair.
[[nodiscard]] constexpr bool IsHighSurrogate(int unit) noexcept { return unit >= 0xD800 && unit <= 0xDBFF; }
[[nodiscard]] constexpr bool IsLowSurrogate(int unit) noexcept { return unit >= 0xDC00 && unit <= 0xDFFF; }

void ReplaceLoneSurrogates(std::u16string& characters) noexcept;
