#include "Platform/WindowServer.h"

// AppKit is complete here: the functions that complete it on other systems have nothing to do.
namespace tessaro::platform {

void CompleteAppKit() {}

}  // namespace tessaro::platform
