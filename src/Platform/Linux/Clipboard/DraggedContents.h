#pragma once

namespace tessaro::platform {

// Has drags from other programs bring their files and texts along: GNUstep announces such drags, but leaves its drag
// pasteboard as it was, so that no view would accept them. Main thread only, once there is a window server.
void CompleteDrags();

}  // namespace tessaro::platform
