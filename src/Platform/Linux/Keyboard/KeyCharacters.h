#pragma once

#include <cstdint>

// What the keyboard's layouts have on a key beyond the character it has just typed. Main thread only; 0 where there is
// none.
namespace tessaro::platform {

// The character that the key types without any modifier in the layout in use.
[[nodiscard]] char16_t UnshiftedCharacter(std::uint16_t systemKeyCode) noexcept;

// The ASCII character that the key types in the first of the user's layouts in which it types one, and where none has
// any, on an American keyboard.
[[nodiscard]] char16_t AsciiCharacter(std::uint16_t systemKeyCode, bool isShifted) noexcept;

// Greek, Cyrillic, Arabic, Kana, Hangul …: what is no key equivalent of any menu in Latin letters.
[[nodiscard]] bool IsOfOtherScript(char16_t character) noexcept;

}  // namespace tessaro::platform
