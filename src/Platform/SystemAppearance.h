#pragma once

namespace tessaro::platform {

// Whether the desktop asks for a dark appearance; false where it does not say. Main thread only. The first call may
// wait for the desktop; later ones know the answer, and follow its changes.
[[nodiscard]] bool IsDarkMode();

// From the first call on, changes of that answer are posted as "AppleInterfaceThemeChangedNotification" to the
// distributed notification centre. Main thread only.
void AnnounceAppearanceChanges();

}  // namespace tessaro::platform
