#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <vector>

#include "Base/Ref.h"
#include "Platform/UserNotifications.h"

@class TsUserNotificationCenter;

// An alert for TsUserNotificationCenter, with the methods of Cocoa's NSUserNotification. Main thread only.
@interface TsAlert : NSObject {
 @private
  tessaro::platform::UserNotification _contents;
  Ref<NSDate> _deliveryDate;
  Ref<NSAttributedString> _response;
  NSInteger _activationType;
}

@property(nonatomic, copy) NSString* identifier;
@property(nonatomic, copy) NSString* title;
@property(nonatomic, copy) NSString* subtitle;
@property(nonatomic, copy) NSString* informativeText;
@property(nonatomic, copy) NSString* soundName;
@property(nonatomic) BOOL hasActionButton;
@property(nonatomic, copy) NSString* actionButtonTitle;
@property(nonatomic) BOOL hasReplyButton;
@property(nonatomic, copy) NSString* responsePlaceholder;
@property(nonatomic, copy) NSDate* deliveryDate;

// How the user has activated the alert, as a UserNotificationActivation, and the reply.
@property(nonatomic, readonly) NSInteger activationType;
@property(nonatomic, readonly) NSAttributedString* response;

// ---- For the centre

- (instancetype)initWithContents:(const tessaro::platform::UserNotification&)contents;

@property(nonatomic, readonly) const tessaro::platform::UserNotification& contents;

// nil: no reply.
- (void)setActivationType:(NSInteger)type response:(NSString*)response;

@end

// The delegate methods of Cocoa's notification centre, with those that its public protocol leaves out.
@protocol TsUserNotificationCenterDelegate <NSObject>

- (void)userNotificationCenter:(TsUserNotificationCenter*)center didDeliverNotification:(TsAlert*)alert;
- (void)userNotificationCenter:(TsUserNotificationCenter*)center didActivateNotification:(TsAlert*)alert;
// Asked before an alert is shown while the application is active.
- (BOOL)userNotificationCenter:(TsUserNotificationCenter*)center shouldPresentNotification:(TsAlert*)alert;
// The user has closed the alert.
- (void)userNotificationCenter:(TsUserNotificationCenter*)center didDismissAlert:(TsAlert*)alert;
- (void)userNotificationCenter:(TsUserNotificationCenter*)center
            ts_couldNotDeliver:(TsAlert*)alert
                        reason:(NSString*)reason;

@end

// The application's alerts, scheduled and delivered, with the methods of Cocoa's NSUserNotificationCenter, which Apple
// has retired: the same class on every system, above platform::UserNotifications. Main thread only.
@interface TsUserNotificationCenter : NSObject {
 @private
  struct Listed {
    std::string key;
    Ref<TsAlert> alert;
  };
  std::vector<Listed> _scheduled;
  std::vector<Listed> _delivered;
  id<TsUserNotificationCenterDelegate> _delegate;
}

+ (TsUserNotificationCenter*)defaultUserNotificationCenter;

// Not owned.
@property(nonatomic, assign) id<TsUserNotificationCenterDelegate> delegate;

@property(nonatomic, readonly) NSArray* scheduledNotifications;

// Delivers the alert at its delivery date, or now when it has none.
- (void)scheduleNotification:(TsAlert*)alert;
- (void)removeScheduledNotification:(TsAlert*)alert;

// Alerts that are on screen or about to be, in the order of their delivery.
@property(nonatomic, readonly) NSArray* deliveredNotifications;

// Takes the place of a delivered alert of the same identifier.
- (void)deliverNotification:(TsAlert*)alert;
- (void)removeDeliveredNotification:(TsAlert*)alert;
- (void)removeAllDeliveredNotifications;

@end
