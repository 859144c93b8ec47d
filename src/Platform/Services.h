#pragma once

#include <string>

#include "Base/Result.h"

namespace tessaro::platform {

// Performs another application's service on the pasteboard of a name. `service` is its path in the Services menu.
// Starts the application if needed, and waits for the reply as long as the service's declaration allows. Fails when no
// application offers the service, or the service fails; nothing is shown to the user. Main thread only.
[[nodiscard]] Result<void> PerformService(const std::string& service, const std::string& pasteboard);

}  // namespace tessaro::platform
