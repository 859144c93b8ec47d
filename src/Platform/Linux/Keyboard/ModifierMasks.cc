#include "Platform/Linux/Keyboard/ModifierKeys.h"

#include <X11/XKBlib.h>
#include <X11/keysym.h>

#include "Platform/Linux/Base/XDisplay.h"

namespace tessaro::platform {

namespace {

constexpr unsigned kModifierBits =
    ShiftMask | LockMask | ControlMask | Mod1Mask | Mod2Mask | Mod3Mask | Mod4Mask | Mod5Mask;

unsigned MaskOf(Display* display, KeySym symbol) { return XkbKeysymToModifiers(display, symbol); }

// A modifier's second key is normally a twin of the first, with the same mask.
unsigned MaskOf(Display* display, Modifier modifier) {
  for (const std::string& name : ModifierKeyNames(modifier)) {
    if (const unsigned mask = MaskOf(display, XStringToKeysym(name.c_str()))) return mask;
  }
  return 0;
}

std::vector<unsigned> Combinations(std::initializer_list<unsigned> masks) {
  std::vector<unsigned> combinations{0};
  unsigned seen = 0;
  for (const unsigned mask : masks) {
    if (mask == 0 || (seen & mask) != 0) continue;
    seen |= mask;
    for (std::size_t i = 0, count = combinations.size(); i < count; ++i) combinations.push_back(combinations[i] | mask);
  }
  return combinations;
}

}  // namespace

ModifierMasks::ModifierMasks(Display* display)
    : command_(MaskOf(display, Modifier::Command)),
      option_(MaskOf(display, Modifier::Option)),
      control_(MaskOf(display, Modifier::Control)),
      locks_(Combinations({LockMask, MaskOf(display, XK_Num_Lock), MaskOf(display, XK_Scroll_Lock)})) {}

std::optional<unsigned> ModifierMasks::Of(const HotKey& key) const {
  const bool isLacking =
      (key.command && command_ == 0) || (key.option && option_ == 0) || (key.control && control_ == 0);
  if (isLacking) return std::nullopt;
  return (key.command ? command_ : 0) | (key.option ? option_ : 0) | (key.control ? control_ : 0) |
         (key.shift ? ShiftMask : 0);
}

unsigned ModifierMasks::Held(unsigned state) const { return state & kModifierBits & ~locks_.back(); }

HeldModifiers CurrentModifiers() noexcept {
  Display* display = XDisplay();
  XkbStateRec state{};
  if (display == nullptr || XkbGetState(display, XkbUseCoreKbd, &state) != Success) return {};
  const ModifierMasks masks(display);
  const auto holds = [&](const HotKey& modifier) {
    const auto mask = masks.Of(modifier);
    return mask && (state.mods & *mask) != 0;
  };
  return {
      .command = holds({.command = true}),
      .option = holds({.option = true}),
      .control = holds({.control = true}),
      .shift = holds({.shift = true}),
      .capsLock = (state.locked_mods & LockMask) != 0,
  };
}

}  // namespace tessaro::platform
