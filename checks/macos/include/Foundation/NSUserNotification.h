#pragma once

#include <Foundation/NSDate.h>

// Deprecated as a whole in macOS 11: its classes stay in Foundation, and deliver nothing on current systems.
enum NSUserNotificationActivationType : NSInteger {
  NSUserNotificationActivationTypeNone = 0,
  NSUserNotificationActivationTypeContentsClicked = 1,
  NSUserNotificationActivationTypeActionButtonClicked = 2,
  NSUserNotificationActivationTypeReplied = 3,
  NSUserNotificationActivationTypeAdditionalActionClicked = 4,
};

@class NSAttributedString;

API_DEPRECATED("", macos(10.8, 11.0))
@interface NSUserNotification : NSObject <NSCopying>
@property(copy) NSString* title;
@property(copy) NSString* subtitle;
@property(copy) NSString* informativeText;
@property(copy) NSString* actionButtonTitle;
@property(copy) NSString* otherButtonTitle;
@property(copy) NSDictionary* userInfo;
@property(copy) NSDate* deliveryDate;
@property(copy) NSString* soundName;
@property(copy) NSString* identifier;
@property(copy) NSString* responsePlaceholder;
@property BOOL hasActionButton;
@property BOOL hasReplyButton;
@property(readonly) NSUserNotificationActivationType activationType;
@property(readonly, copy) NSAttributedString* response;
@end

@class NSUserNotificationCenter;
API_DEPRECATED("", macos(10.8, 11.0))
@protocol NSUserNotificationCenterDelegate <NSObject>
@optional
- (void)userNotificationCenter:(NSUserNotificationCenter*)center
        didDeliverNotification:(NSUserNotification*)notification;
- (void)userNotificationCenter:(NSUserNotificationCenter*)center
       didActivateNotification:(NSUserNotification*)notification;
- (BOOL)userNotificationCenter:(NSUserNotificationCenter*)center
     shouldPresentNotification:(NSUserNotification*)notification;
@end

API_DEPRECATED("", macos(10.8, 11.0))
@interface NSUserNotificationCenter : NSObject
@property(class, readonly, strong) NSUserNotificationCenter* defaultUserNotificationCenter;
@property(assign) id<NSUserNotificationCenterDelegate> delegate;
@property(copy) NSArray* scheduledNotifications;
@property(readonly, copy) NSArray* deliveredNotifications;
- (void)scheduleNotification:(NSUserNotification*)notification;
- (void)removeScheduledNotification:(NSUserNotification*)notification;
- (void)deliverNotification:(NSUserNotification*)notification;
- (void)removeDeliveredNotification:(NSUserNotification*)notification;
- (void)removeAllDeliveredNotifications;
@end
