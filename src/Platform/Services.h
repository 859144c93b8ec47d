#pragma once

#include <string>

namespace tessaro::platform {

// Has another application's service work on what is on the pasteboard of that name. `service` is its path in the
// Services menu. Waits for the answer, for as long as the service's declaration allows; the application is started if
// it is not running. Nothing is ever shown to the user: false, and a line in the log, when nobody offers the service or
// it fails. Main thread only.
bool PerformService(const std::string& service, const std::string& pasteboard);

}  // namespace tessaro::platform
