#pragma once

namespace tessaro::platform {

// Whether the desktop asks for a dark appearance; false where it does not say. Main thread only. The first call may
// take a moment; later ones answer from what was learnt and what the desktop has announced since.
[[nodiscard]] bool IsDarkMode();

// From the first call on, changes of that answer are announced as "AppleInterfaceThemeChangedNotification" on the
// distributed notification centre. Main thread only.
void AnnounceAppearanceChanges();

}  // namespace tessaro::platform
