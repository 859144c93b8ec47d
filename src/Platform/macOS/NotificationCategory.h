#pragma once

#include <string>
#include <string_view>

#include "Platform/UserNotifications.h"

namespace tessaro::platform {

// A set of buttons, on systems where alerts get their buttons from categories registered beforehand.
struct NotificationCategory {
  enum class Kind { Plain, Button, Reply };

  Kind kind = Kind::Plain;
  std::string title;        // of the button
  std::string placeholder;  // of the field

  // The same for equal categories, in every process.
  [[nodiscard]] std::string Identifier() const;
};

[[nodiscard]] NotificationCategory CategoryOf(const UserNotification& alert,
                                              const UserNotifications::Application& application);

// The requests of this module among those of its process.
[[nodiscard]] std::string RequestIdentifierOf(const UserNotifications::Key& key);
// Empty for a request of the host's.
[[nodiscard]] UserNotifications::Key KeyOfRequest(std::string_view identifier);

}  // namespace tessaro::platform
