#pragma once

namespace tessaro::platform {

// Gives this process's windows the desktop's colours, font and scale, and follows their changes, unless the user has
// chosen a theme of GNUstep's. Main thread only, once there is a window server; called once.
void FollowDesktopLook();

}  // namespace tessaro::platform
