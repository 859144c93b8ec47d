#pragma once

namespace tessaro::platform {

// Calls `listener` on the main thread when the answer of IsDarkMode() has changed. There is one listener.
void ListenForAppearanceChanges(void (*listener)());

}  // namespace tessaro::platform
