#pragma once

#include <cstdint>

#include "Platform/HotKeys.h"

namespace tessaro::platform {

// The modifiers of a hot key as Carbon's events have them.
[[nodiscard]] constexpr std::uint32_t CarbonModifiersOf(const HotKey& key) {
  constexpr std::uint32_t kCommand = 0x100;
  constexpr std::uint32_t kShift = 0x200;
  constexpr std::uint32_t kOption = 0x800;
  constexpr std::uint32_t kControl = 0x1000;
  return (key.command ? kCommand : 0) | (key.shift ? kShift : 0) | (key.option ? kOption : 0) |
         (key.control ? kControl : 0);
}

}  // namespace tessaro::platform
