#pragma once

namespace tessaro::platform {

// Leaves the event loop for good: the main queue is detached and connections to the desktop's services are closed.
// Main thread only, at the end of the script environment.
void ShutDown();

}  // namespace tessaro::platform
