#pragma once

struct _XDisplay;

namespace tessaro::platform {

// The connection that AppKit has to the X server, for questions on the main thread: it keeps its idea of the keyboard
// up to date. nullptr if missing.
[[nodiscard]] _XDisplay* XDisplay() noexcept;

}  // namespace tessaro::platform
