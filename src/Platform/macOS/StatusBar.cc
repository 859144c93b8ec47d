#include "Platform/StatusBar.h"

// The menu bar is always there, and shows status items by itself.
namespace tessaro::platform {

bool IsStatusBarAvailable() { return true; }

}  // namespace tessaro::platform
