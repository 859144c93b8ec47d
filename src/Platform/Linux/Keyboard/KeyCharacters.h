#pragma once

#include <cstdint>

// The other characters that a key types. Main thread only; 0 for no character.
namespace tessaro::platform {

// The character that the key types without any modifier in the layout in use.
[[nodiscard]] char16_t UnshiftedCharacter(std::uint16_t systemKeyCode) noexcept;

// The key's ASCII character in the first of the user's layouts that has one, or else on an American keyboard.
[[nodiscard]] char16_t AsciiCharacter(std::uint16_t systemKeyCode, bool isShifted) noexcept;

// Greek, Cyrillic, Arabic, Kana, Hangul …: never the key equivalent of a menu in Latin letters.
[[nodiscard]] bool IsOfOtherScript(char16_t character) noexcept;

}  // namespace tessaro::platform
