#pragma once

namespace tessaro::platform {

// Offers to move the application into the applications folder, on systems where the user installs by dragging. Main
// thread only.
void OfferMoveToApplicationsFolder();

}  // namespace tessaro::platform
