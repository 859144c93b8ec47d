#pragma once

#include <string>
#include <vector>

namespace tessaro::platform {

// The main bundle's resources; empty when it has none.
[[nodiscard]] std::string BundleResourceFolder();

// GNUstep's sound folders, the user's first.
[[nodiscard]] std::vector<std::string> GNUstepSoundFolders();

}  // namespace tessaro::platform
