#pragma once

namespace tessaro::platform {

// Whether this process is connected to a display, so that windows, images and fonts can be made. Main thread only.
[[nodiscard]] bool IsWindowServerAvailable();

}  // namespace tessaro::platform
