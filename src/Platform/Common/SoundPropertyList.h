#pragma once

#include <string_view>

namespace tessaro::platform {

// Whether a property list, in any form, is well-formed as far as GNUstep's reader relies on it, and neither deeper nor
// larger than lists are. The reader goes where a binary list says, beyond its end and around in circles too, and
// exhausts the stack at deep ones. GNUstep's own serialization, which instantiates any class, is not sound.
[[nodiscard]] bool IsSoundPropertyList(std::string_view list) noexcept;

}  // namespace tessaro::platform
