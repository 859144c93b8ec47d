#pragma once

#include <string>
#include <vector>

// The keys that GNUstep uses as the modifiers of a Mac's keyboard.
namespace tessaro::platform {

enum class Modifier { Command, Option, Control };

// The names of their X symbols ("Control_L"): the user's choice, or GNUstep's default. Empty where the user has
// disabled the modifier.
[[nodiscard]] std::vector<std::string> ModifierKeyNames(Modifier modifier) noexcept;

}  // namespace tessaro::platform
