#pragma once

namespace tessaro::platform {

// Whether the desktop shows status items at this moment. Items that exist appear as soon as it does.
// Main thread only; the answer may take some milliseconds.
[[nodiscard]] bool IsStatusBarAvailable();

}  // namespace tessaro::platform
