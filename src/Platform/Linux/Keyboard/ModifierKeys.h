#pragma once

#include <string>
#include <vector>

// The keys that GNUstep uses as the modifiers of a Mac's keyboard.
namespace tessaro::platform {

enum class Modifier { Command, Option, Control };

// The names of the keys' X symbols ("Control_L"): the user's choice, or GNUstep's default. Empty for a modifier that
// the user has disabled.
[[nodiscard]] std::vector<std::string> ModifierKeyNames(Modifier modifier) noexcept;

}  // namespace tessaro::platform
