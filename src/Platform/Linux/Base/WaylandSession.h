#pragma once

namespace tessaro::platform {

// Whether the display is a Wayland compositor's. Its X server, if any, knows only the windows and keys of X11
// applications.
[[nodiscard]] bool IsWaylandSession() noexcept;

}  // namespace tessaro::platform
