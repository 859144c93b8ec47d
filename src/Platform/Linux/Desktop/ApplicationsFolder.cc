#include "Platform/ApplicationsFolder.h"

namespace tessaro::platform {

// Packages decide where programs live on Linux: there is no folder to move to.
void OfferMoveToApplicationsFolder() {}

}  // namespace tessaro::platform
