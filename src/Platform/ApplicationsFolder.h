#pragma once

namespace tessaro::platform {

// Where applications live in a folder that the user fills, offers to move this one there. Main thread only.
void OfferMoveToApplicationsFolder();

}  // namespace tessaro::platform
