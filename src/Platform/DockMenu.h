#pragma once

namespace tessaro::platform {

// Offers the desktop the menu that the application's delegate returns from applicationDockMenu:, for its Dock or
// launcher. The menu is requested each time it is about to open. For the life of the process; main thread only.
void OfferDockMenu();

// To be called when the menu may have changed, for launchers that read it once and keep it. If one has read it, the
// menu is built again on a later turn of the main loop.
void DockMenuMayHaveChanged();

}  // namespace tessaro::platform
