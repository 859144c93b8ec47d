#include "Platform/WindowServer.h"

#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSDisplayServer.h>

namespace tessaro::platform {

// NSApp does not tell: it is set even when connecting to the display has failed.
bool IsWindowServerAvailable() { return GSCurrentServer() != nil; }

}  // namespace tessaro::platform
