#include "Platform/Linux/KeyCharacters.h"

#include <X11/XKBlib.h>

#include <string_view>

#include "Platform/KeyboardLayout.h"
#include "Platform/Linux/XDisplay.h"

namespace tessaro::platform {

namespace {

// Printable keys of an American keyboard by virtual key code, 0 for the others.
constexpr std::string_view kAmerican{"asdfhgzxcv\0bqweryt123465=97-80]ou[ip\0lj'k;\\,/nm.\0 `", 51};
constexpr std::string_view kAmericanShifted{"ASDFHGZXCV\0BQWERYT!@#$^%+(&_*)}OU{IP\0LJ\"K:|<?NM>\0 ~", 51};
static_assert(kAmerican[43] == ',' && kAmerican[49] == ' ' && kAmericanShifted[33] == '{' &&
              kAmericanShifted[2] == 'D');

constexpr KeySym kUnicodeKeysyms = 0x01000000;

char16_t CharacterOf(KeySym symbol) {
  const bool isLatin1 = (symbol >= 0x20 && symbol <= 0x7e) || (symbol >= 0xa0 && symbol <= 0xff);
  if (isLatin1) return static_cast<char16_t>(symbol);
  const bool isUnicode = symbol > kUnicodeKeysyms && symbol <= kUnicodeKeysyms + 0xffff;
  return isUnicode ? static_cast<char16_t>(symbol - kUnicodeKeysyms) : 0;
}

char16_t CharacterOn(Display* display, std::uint16_t systemKeyCode, int group, int level) {
  return CharacterOf(XkbKeycodeToKeysym(display, static_cast<KeyCode>(systemKeyCode), group, level));
}

}  // namespace

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
  const std::uint16_t key = VirtualKeyCode(systemKeyCode);
  const std::string_view american = isShifted ? kAmericanShifted : kAmerican;
  return key < american.size() ? static_cast<char16_t>(american[key]) : 0;
}

}  // namespace tessaro::platform
