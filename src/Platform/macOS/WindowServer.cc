#include "Platform/WindowServer.h"

#include <CoreGraphics/CoreGraphics.h>

#include "Platform/macOS/CFRef.h"

// A process outside a login session, as over SSH, has no session dictionary. Any thread.
namespace tessaro::platform {

bool IsWindowServerAvailable() { return static_cast<bool>(CFRef(CGSessionCopyCurrentDictionary())); }

}  // namespace tessaro::platform
