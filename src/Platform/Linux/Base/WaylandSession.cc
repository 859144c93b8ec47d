#include "Platform/Linux/Base/WaylandSession.h"

#include <cstdlib>
#include <cstring>

namespace tessaro::platform {

bool IsWaylandSession() noexcept {
  const char* type = std::getenv("XDG_SESSION_TYPE");
  return std::getenv("WAYLAND_DISPLAY") != nullptr || (type != nullptr && std::strcmp(type, "wayland") == 0);
}

}  // namespace tessaro::platform
