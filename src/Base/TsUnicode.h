#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Conversions between the encodings that texts come in. Whatever the input, the result is well-formed: a lone
// surrogate or a malformed sequence becomes U+FFFD.

// Copies, and tells whether all of it is ASCII.
[[nodiscard]] bool CopyAscii(std::string_view bytes, std::uint8_t* out) noexcept;

[[nodiscard]] bool FitsLatin1(const char16_t* characters, std::size_t length) noexcept;

void ReplaceLoneSurrogates(char16_t* characters, std::size_t length) noexcept;

[[nodiscard]] std::string Latin1ToUtf8(const std::uint8_t* characters, std::size_t length);
[[nodiscard]] std::string Utf16ToUtf8(const char16_t* characters, std::size_t length);
[[nodiscard]] std::u16string Utf8ToUtf16(std::string_view utf8);

// For callers that bring the memory: each writes to `out` and returns how many units it wrote. The room needed at
// most is 2 bytes for a Latin-1 character, 3 bytes for a UTF-16 unit, and one unit for a byte of UTF-8.
std::size_t Latin1ToUtf8(const std::uint8_t* characters, std::size_t length, char* out) noexcept;
std::size_t Utf16ToUtf8(const char16_t* characters, std::size_t length, char* out) noexcept;
std::size_t Utf8ToUtf16(std::string_view utf8, char16_t* out) noexcept;
