#pragma once

namespace tessaro::platform {

// Where the system's Cocoa leaves something out, makes its toolbars do what Cocoa's do: show the views of items and the
// selection, take every item of the system, and follow a dark desktop. Main thread only, once there is a window
// server. Repeated calls do nothing.
void CompleteToolbars();

}  // namespace tessaro::platform
