#pragma once

#include <string>
#include <vector>

// Which keys GNUstep takes for the modifiers of a Mac's keyboard.
namespace tessaro::platform {

enum class Modifier { Command, Option, Control };

// By the names that X has for their symbols, "Control_L": the user's choice, or else GNUstep's own. Empty where the
// user wants none.
[[nodiscard]] std::vector<std::string> ModifierKeyNames(Modifier modifier) noexcept;

}  // namespace tessaro::platform
