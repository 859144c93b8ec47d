#pragma once

struct _XDisplay;

namespace tessaro::platform {

// The connection that AppKit has to the X server, for questions on the main thread: it keeps its idea of the keyboard
// up to date. nullptr if missing.
[[nodiscard]] _XDisplay* XDisplay() noexcept;

// Whether the display is a Wayland compositor's. Its X server, if any, knows only the windows and keys of X11
// applications. Any thread.
[[nodiscard]] bool IsWaylandSession() noexcept;

}  // namespace tessaro::platform
