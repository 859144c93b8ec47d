#include "Platform/WindowServer.h"

#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSDisplayServer.h>

#include <cstdlib>
#include <string_view>

#include "Platform/Linux/Base/XDisplay.h"

namespace tessaro::platform {

// NSApp is no sign of a display: it is set even when connecting to the display has failed.
bool IsWindowServerAvailable() { return GSCurrentServer() != nil; }

_XDisplay* XDisplay() noexcept { return static_cast<_XDisplay*>([GSCurrentServer() serverDevice]); }

bool IsWaylandSession() noexcept {
  const char* type = std::getenv("XDG_SESSION_TYPE");
  return std::getenv("WAYLAND_DISPLAY") != nullptr || (type != nullptr && std::string_view(type) == "wayland");
}

}  // namespace tessaro::platform
