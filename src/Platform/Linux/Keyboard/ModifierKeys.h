#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Platform/HotKeys.h"

struct _XDisplay;

// The keys that GNUstep uses as the modifiers of a Mac's keyboard.
namespace tessaro::platform {

enum class Modifier { Command, Option, Control };

// The names of the keys' X symbols ("Control_L"): the user's choice, or GNUstep's default. Empty for a modifier that
// the user has disabled.
[[nodiscard]] std::vector<std::string> ModifierKeyNames(Modifier modifier) noexcept;

struct HeldModifiers {
  bool command = false;
  bool option = false;
  bool control = false;
  bool shift = false;
  bool capsLock = false;
};

// The modifiers that are held now, whichever program has the focus. None without a window server. Main thread only.
[[nodiscard]] HeldModifiers CurrentModifiers() noexcept;

// The bits of modifier keys in the state of X events, for the current keyboard.
class ModifierMasks {
 public:
  ModifierMasks() = default;
  explicit ModifierMasks(_XDisplay* display);

  // None when the keyboard lacks one of the modifiers.
  [[nodiscard]] std::optional<unsigned> Of(const HotKey& key) const;

  // All combinations of Caps Lock, Num Lock and Scroll Lock.
  [[nodiscard]] const std::vector<unsigned>& Locks() const { return locks_; }

  // `state` without locks, mouse buttons and the number of the layout.
  [[nodiscard]] unsigned Held(unsigned state) const;

 private:
  unsigned command_ = 0;
  unsigned option_ = 0;
  unsigned control_ = 0;
  std::vector<unsigned> locks_{0};
};

}  // namespace tessaro::platform
