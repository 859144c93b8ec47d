#pragma once

#import <UserNotifications/UserNotifications.h>

#include "Base/Ref.h"
#include "Platform/macOS/NotificationCategory.h"

// An alert as the system's notification centre has it, and back.
namespace tessaro::platform {

[[nodiscard]] Ref<UNMutableNotificationContent> NewContent(const UserNotification& alert,
                                                           const NotificationCategory& category);
[[nodiscard]] UserNotification AlertOf(UNNotificationContent* content);
[[nodiscard]] UNNotificationCategory* CategoryObject(const NotificationCategory& category);

// Identifiers of the buttons.
inline NSString* const kButtonAction = @"button";
inline NSString* const kReplyAction = @"reply";

}  // namespace tessaro::platform
