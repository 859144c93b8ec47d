#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace tessaro::platform {

// The appearance that the user has chosen for the desktop.
struct DesktopLook {
  bool isDark = false;
  std::uint32_t accent = 0x3584e4;  // red, green and blue, a byte each
  std::string font;                 // "Cantarell 11": family, style and size in points. Empty: the desktop names none
  double scale = 0;                 // pixels for each point of the interface. 0: the desktop does not say

  bool operator==(const DesktopLook&) const = default;
};

// Main thread only. The first call may wait for the desktop; later ones know the look, and follow its changes.
[[nodiscard]] DesktopLook CurrentLook();

// Calls `listener` on the main thread with the new look whenever it has changed.
void ListenForLookChanges(std::function<void(const DesktopLook& look)> listener);

}  // namespace tessaro::platform
