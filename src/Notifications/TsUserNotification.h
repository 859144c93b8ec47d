#pragma once

#import "Notifications/TsUserNotificationCenter.h"

// The delegate of the notification centre. What the user does with an alert is reported to script's
// notification-activation callback, and posted:
//   TsNotificationDidDeliver, TsNotificationDidActivate, TsNotificationDidDismiss   object: the alert
//   TsNotificationActivation                                                        no object, after the callback
@interface TsUserNotification : NSObject <TsUserNotificationCenterDelegate>

+ (instancetype)sharedInstance;

// `deliverAt` is a number of seconds since 1970; a moment in the past becomes ten seconds from now, and nil
// means now. An alert with a reply button has no action button.
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
- (TsAlert*)findUserNotificationWithIdentifier:(NSString*)identifier;

- (void)removeNotification:(NSString*)identifier;

// All alerts, scheduled and delivered.
- (void)removeNotifications;

- (void)callbackForNotification:(TsAlert*)notification typeString:(NSString*)type;

// Beyond the centre's protocol.
- (void)userNotificationCenter:(TsUserNotificationCenter*)center
               responseChanged:(NSAttributedString*)response
               forNotification:(TsAlert*)notification;

@end
