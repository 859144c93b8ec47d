#include "Platform/Linux/Base/XDisplay.h"

#include <X11/Xlib.h>

namespace tessaro::platform {

bool IsMapped(unsigned long window) noexcept {
  XWindowAttributes attributes;
  return XGetWindowAttributes(XDisplay(), window, &attributes) != 0 && attributes.map_state != IsUnmapped;
}

}  // namespace tessaro::platform
