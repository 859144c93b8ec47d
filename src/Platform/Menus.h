#pragma once

namespace tessaro::platform {

// Where the system's Cocoa leaves something out, makes its menus do what Cocoa's do: tell their delegates when they
// open and close (menuWillOpen:, menuDidClose:), leave hidden items out, find the item of a key equivalent with Caps
// Lock on, with Shift and on keyboards of other scripts, and write key equivalents as they are on the user's keyboard.
// Main thread only, once there is a window server. Repeated calls do nothing.
void CompleteMenus();

}  // namespace tessaro::platform
