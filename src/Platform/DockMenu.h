#pragma once

namespace tessaro::platform {

// Lets the desktop show the menu that the application's delegate gives by applicationDockMenu:, wherever it shows the
// application itself. The menu is asked for each time it is about to open. For the life of the process; main thread
// only.
void OfferDockMenu();

// Call it when the menu would be another one now: for launchers that read it once, and keep it. The menu is asked for
// then too, on a later turn of the main loop, if one of them has read it.
void DockMenuMayHaveChanged();

// Whether the desktop has something that shows the menu at this moment. The answer may take some milliseconds.
[[nodiscard]] bool IsDockAvailable();

}  // namespace tessaro::platform
