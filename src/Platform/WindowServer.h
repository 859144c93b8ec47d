#pragma once

namespace tessaro::platform {

// Whether this process is connected to a display, so that windows, images and fonts can be made. Main thread only.
[[nodiscard]] bool IsWindowServerAvailable();

// Completes the system's AppKit where it lacks behaviour of Apple's:
// - menus notify their delegates when they open and close, leave hidden items out, find the item of a key equivalent
//   with Caps Lock on, with Shift and on keyboards of other scripts, and show key equivalents as the user's keyboard
//   has them;
// - toolbars show the views of items and the selection, take every item of the system, and follow a dark desktop;
// - drags from other programs bring their files and texts along.
// Main thread only, once there is a window server. Repeated calls do nothing.
void CompleteAppKit();

}  // namespace tessaro::platform
