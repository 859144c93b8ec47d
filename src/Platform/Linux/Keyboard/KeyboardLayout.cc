#include "Platform/KeyboardLayout.h"

#include <X11/XKBlib.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string_view>

#include "Platform/Linux/Base/XDisplay.h"
#include "Platform/Linux/Keyboard/KeyCharacters.h"

namespace tessaro::platform {

namespace {

constexpr std::size_t kKeyCodes = 256;

struct NamedKey {
  std::string_view name;
  std::uint8_t virtualKeyCode;
};

// X names keys by row and column, counted from the bottom left: AB is the row of Z, AC of A, AD of Q, AE of
// the digits.
constexpr NamedKey kNamedKeys[] = {
    {"TLDE", 50},  {"AE01", 18},  {"AE02", 19},  {"AE03", 20},  {"AE04", 21},  {"AE05", 23},  {"AE06", 22},
    {"AE07", 26},  {"AE08", 28},  {"AE09", 25},  {"AE10", 29},  {"AE11", 27},  {"AE12", 24},  {"AE13", 93},
    {"BKSP", 51},

    {"TAB", 48},   {"AD01", 12},  {"AD02", 13},  {"AD03", 14},  {"AD04", 15},  {"AD05", 17},  {"AD06", 16},
    {"AD07", 32},  {"AD08", 34},  {"AD09", 31},  {"AD10", 35},  {"AD11", 33},  {"AD12", 30},  {"RTRN", 36},

    {"CAPS", 57},  {"AC01", 0},   {"AC02", 1},   {"AC03", 2},   {"AC04", 3},   {"AC05", 5},   {"AC06", 4},
    {"AC07", 38},  {"AC08", 40},  {"AC09", 37},  {"AC10", 41},  {"AC11", 39},  {"AC12", 42},  {"BKSL", 42},

    {"LFSH", 56},  {"LSGT", 10},  {"AB01", 6},   {"AB02", 7},   {"AB03", 8},   {"AB04", 9},   {"AB05", 11},
    {"AB06", 45},  {"AB07", 46},  {"AB08", 43},  {"AB09", 47},  {"AB10", 44},  {"AB11", 94},  {"RTSH", 60},

    {"LCTL", 59},  {"LALT", 58},  {"LWIN", 55},  {"SPCE", 49},  {"RALT", 61},  {"LVL3", 61},  {"RWIN", 54},
    {"RCTL", 62},  {"MENU", 110}, {"COMP", 110},

    {"ESC", 53},   {"FK01", 122}, {"FK02", 120}, {"FK03", 99},  {"FK04", 118}, {"FK05", 96},  {"FK06", 97},
    {"FK07", 98},  {"FK08", 100}, {"FK09", 101}, {"FK10", 109}, {"FK11", 103}, {"FK12", 111}, {"FK13", 105},
    {"FK14", 107}, {"FK15", 113}, {"FK16", 106}, {"FK17", 64},  {"FK18", 79},  {"FK19", 80},  {"FK20", 90},

    {"INS", 114},  {"HOME", 115}, {"PGUP", 116}, {"DELE", 117}, {"END", 119},  {"PGDN", 121}, {"LEFT", 123},
    {"RGHT", 124}, {"DOWN", 125}, {"UP", 126},

    {"NMLK", 71},  {"KPEQ", 81},  {"KPDV", 75},  {"KPMU", 67},  {"KPSU", 78},  {"KPAD", 69},  {"KPEN", 76},
    {"KPDL", 65},  {"KP0", 82},   {"KP1", 83},   {"KP2", 84},   {"KP3", 85},   {"KP4", 86},   {"KP5", 87},
    {"KP6", 88},   {"KP7", 89},   {"KP8", 91},   {"KP9", 92},
};

std::uint16_t VirtualKeyCodeOf(std::string_view name) {
  const auto* const key = std::find_if(std::begin(kNamedKeys), std::end(kNamedKeys),
                                       [name](const auto& each) { return each.name == name; });
  return key == std::end(kNamedKeys) ? kNoVirtualKey : key->virtualKeyCode;
}

struct KeyboardDeleter {
  void operator()(XkbDescPtr keyboard) const { XkbFreeKeyboard(keyboard, 0, True); }
};

using KeyNames = std::unique_ptr<XkbDescRec, KeyboardDeleter>;

KeyNames ReadKeyNames(Display* display) {
  KeyNames keyboard(XkbAllocKeyboard());
  if (!keyboard) return nullptr;
  keyboard->dpy = display;
  const bool isRead = XkbGetControls(display, XkbAllControlsMask, keyboard.get()) == Success &&
                      XkbGetNames(display, XkbKeyNamesMask, keyboard.get()) == Success;
  return isRead && keyboard->names != nullptr && keyboard->names->keys != nullptr ? std::move(keyboard) : nullptr;
}

using Table = std::array<std::uint16_t, kKeyCodes>;

Table MakeTable(Display* display) {
  Table table;
  table.fill(kNoVirtualKey);
  const KeyNames keyboard = ReadKeyNames(display);
  if (!keyboard) return table;
  for (std::size_t code = keyboard->min_key_code; code <= keyboard->max_key_code; ++code) {
    const char* name = keyboard->names->keys[code].name;
    table[code] = VirtualKeyCodeOf({name, strnlen(name, XkbKeyNameLength)});
  }
  return table;
}

// ---- Characters

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

// Key names don't depend on the layout: read them once.
std::uint16_t VirtualKeyCode(std::uint16_t systemKeyCode) {
  Display* display = XDisplay();
  if (display == nullptr || systemKeyCode >= kKeyCodes) return kNoVirtualKey;
  static const Table kTable = MakeTable(display);
  return kTable[systemKeyCode];
}

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
