#pragma once

#include "Platform/Cocoa.h"

// The application's alerts in the notification centre, whose delegate it is. What the user does with an alert is told
// to the notification-activation callback, and posted:
//   TsNotificationDidDeliver, TsNotificationDidActivate, TsNotificationDidDismiss   object: the alert
//   TsNotificationActivation                                                        no object, after the callback
@interface TsUserNotification : NSObject <NSUserNotificationCenterDelegate>

+ (instancetype)sharedInstance;

// `deliverAt` is a number of seconds since 1970; a moment that has passed is put off to ten seconds from now, and nil
// is at once. An alert with a reply button has no action button.
- (void)showNotification:(NSString*)identifier
                   title:(NSString*)title
                subTitle:(NSString*)subtitle
         informativeText:(NSString*)informativeText
               soundName:(NSString*)soundName
         hasActionButton:(BOOL)hasActionButton
       actionButtonTitle:(NSString*)actionButtonTitle
     responsePlaceholder:(NSString*)responsePlaceholder
          hasReplyButton:(BOOL)hasReplyButton
               deliverAt:(NSString*)deliverAt;

// The delivered alert of this identifier, otherwise the scheduled one.
- (NSUserNotification*)findUserNotificationWithIdentifier:(NSString*)identifier;

- (void)removeNotification:(NSString*)identifier;

// All of them, scheduled and delivered.
- (void)removeNotifications;

- (void)callbackForNotification:(NSUserNotification*)notification typeString:(NSString*)type;

// What a centre may tell its delegate beyond the public protocol.
- (void)userNotificationCenter:(NSUserNotificationCenter*)center didDismissAlert:(NSUserNotification*)notification;
- (void)userNotificationCenter:(NSUserNotificationCenter*)center
               responseChanged:(NSAttributedString*)response
               forNotification:(NSUserNotification*)notification;

@end
