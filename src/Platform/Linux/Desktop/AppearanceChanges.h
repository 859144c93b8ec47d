#pragma once

namespace tessaro::platform {

// Has `listener` called on the main thread when the answer of IsDarkMode() has changed. There is one listener.
void ListenForAppearanceChanges(void (*listener)());

}  // namespace tessaro::platform
