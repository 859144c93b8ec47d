#pragma once

#include <string_view>

namespace tessaro::platform {

// Whether a property list in Apple's binary form keeps within its bytes, and is no deeper and larger than one of
// settings would be. GNUstep's reader goes where the list says, beyond its end and around in circles too.
[[nodiscard]] bool IsSoundBinaryPropertyList(std::string_view list) noexcept;

}  // namespace tessaro::platform
