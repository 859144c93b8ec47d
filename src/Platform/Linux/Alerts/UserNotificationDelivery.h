#pragma once

namespace tessaro::platform {

// Leaves the event loop for good. Alerts stay on screen, and those to come in their files. Main thread only.
void EndUserNotificationDelivery() noexcept;

}  // namespace tessaro::platform
