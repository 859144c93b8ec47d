#pragma once

namespace tessaro::platform {

// Puts the files and texts of drags from other programs on the drag pasteboard. GNUstep announces such drags, but
// leaves the pasteboard as it was, so no view would accept them. Main thread only, once there is a window server.
void CompleteDrags();

}  // namespace tessaro::platform
