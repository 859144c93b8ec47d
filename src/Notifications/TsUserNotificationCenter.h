#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <vector>

#include "Base/Ref.h"
#import "Notifications/TsAlert.h"
#include "Platform/UserNotifications.h"

@class TsUserNotificationCenter;

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
