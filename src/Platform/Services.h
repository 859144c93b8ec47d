#pragma once

#include <optional>
#include <string>

namespace tessaro::platform {

// Has another application's service work on what is on the pasteboard of that name. `service` is its path in the
// Services menu. Waits for the answer, for as long as the service's declaration allows; the application is started if
// it is not running. Gives the reason when nobody offers the service, or it fails; nothing is ever shown to the user.
// Main thread only.
[[nodiscard]] std::optional<std::string> PerformService(const std::string& service, const std::string& pasteboard);

}  // namespace tessaro::platform
