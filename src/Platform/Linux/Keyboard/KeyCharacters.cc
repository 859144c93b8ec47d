#include "Platform/Linux/Keyboard/KeyCharacters.h"

#include <X11/XKBlib.h>
#include <xkbcommon/xkbcommon.h>

#include <string_view>

#include "Platform/KeyboardLayout.h"
#include "Platform/Linux/Base/XDisplay.h"

namespace tessaro::platform {

namespace {

// Printable keys of an American keyboard by virtual key code, 0 for the others.
constexpr std::string_view kAmerican{"asdfhgzxcv\0bqweryt123465=97-80]ou[ip\0lj'k;\\,/nm.\0 `", 51};
constexpr std::string_view kAmericanShifted{"ASDFHGZXCV\0BQWERYT!@#$^%+(&_*)}OU{IP\0LJ\"K:|<?NM>\0 ~", 51};
static_assert(kAmerican[43] == ',' && kAmerican[49] == ' ' && kAmericanShifted[33] == '{' &&
              kAmericanShifted[2] == 'D');

char16_t CharacterOf(KeySym symbol) {
  const std::uint32_t character = xkb_keysym_to_utf32(static_cast<xkb_keysym_t>(symbol));
  const bool isPrintable = character >= 0x20 && character != 0x7f && character <= 0xffff;
  return isPrintable ? static_cast<char16_t>(character) : 0;
}

char16_t CharacterOn(Display* display, std::uint16_t systemKeyCode, int group, int level) {
  return CharacterOf(XkbKeycodeToKeysym(display, static_cast<KeyCode>(systemKeyCode), group, level));
}

char16_t AmericanCharacter(std::uint16_t virtualKeyCode, bool isShifted) {
  const std::string_view american = isShifted ? kAmericanShifted : kAmerican;
  return virtualKeyCode < american.size() ? static_cast<char16_t>(american[virtualKeyCode]) : 0;
}

std::uint16_t SystemKeyCode(std::uint16_t virtualKeyCode) {
  constexpr std::uint16_t kLast = 255;
  std::uint16_t code = 0;
  while (code <= kLast && VirtualKeyCode(code) != virtualKeyCode) ++code;
  return code;
}

}  // namespace

bool IsOfOtherScript(char16_t character) noexcept {
  return (character >= 0x370 && character < 0x1e00) || (character >= 0x2e80 && character < 0xd800);
}

char16_t UnshiftedCharacter(std::uint16_t systemKeyCode) noexcept {
  Display* display = XDisplay();
  XkbStateRec state{};
  if (display == nullptr || XkbGetState(display, XkbUseCoreKbd, &state) != Success) return 0;
  return CharacterOn(display, systemKeyCode, state.group, 0);
}

char16_t AsciiCharacter(std::uint16_t systemKeyCode, bool isShifted) noexcept {
  Display* display = XDisplay();
  if (display == nullptr) return 0;
  for (int group = 0; group < XkbNumKbdGroups; ++group) {
    const char16_t character = CharacterOn(display, systemKeyCode, group, isShifted ? 1 : 0);
    if (character != 0 && character < 0x7f) return character;
  }
  return AmericanCharacter(VirtualKeyCode(systemKeyCode), isShifted);
}

char16_t CharacterOnKey(std::uint16_t virtualKeyCode) {
  if (XDisplay() == nullptr) return AmericanCharacter(virtualKeyCode, false);
  const std::uint16_t key = SystemKeyCode(virtualKeyCode);
  const char16_t character = UnshiftedCharacter(key);
  return character == 0 || IsOfOtherScript(character) ? AsciiCharacter(key, false) : character;
}

}  // namespace tessaro::platform
