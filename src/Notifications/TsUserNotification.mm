#import "Notifications/TsUserNotification.h"

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Utilities/TsCallbackSlot.h"
#include "Utilities/TsNotificationObserver.h"

namespace {

constexpr NSTimeInterval kDelayOfPastDates = 10;

NSString* TypeWord(NSInteger activationType) {
  NSArray* words =
      @[ @"none", @"contents-clicked", @"action-button-clicked", @"replied", @"additional-action-clicked" ];
  const bool isKnown = activationType >= 0 && activationType < static_cast<NSInteger>([words count]);
  return isKnown ? [words objectAtIndex:static_cast<NSUInteger>(activationType)] : @"unknown";
}

NSDate* DeliveryDate(NSString* secondsSince1970) {
  NSDate* now = [NSDate date];
  NSDate* date = [NSDate dateWithTimeIntervalSince1970:static_cast<NSTimeInterval>([secondsSince1970 longLongValue])];
  if ([date compare:now] != NSOrderedDescending) return [now dateByAddingTimeInterval:kDelayOfPastDates];
  // Foundation takes seconds to describe a date millions of years away.
  return [date earlierDate:[NSDate distantFuture]];
}

TsAlert* FindAlert(NSArray* alerts, NSString* identifier) {
  for (TsAlert* alert in alerts) {
    if ([[alert identifier] isEqualToString:identifier]) return alert;
  }
  return nil;
}

}  // namespace

@implementation TsUserNotification

+ (instancetype)sharedInstance {
  static Forever<Ref<TsUserNotification>> instance(Adopt([[self alloc] init]));
  return *instance;
}

- (instancetype)init {
  self = [super init];
  if (self != nil) [[TsUserNotificationCenter defaultUserNotificationCenter] setDelegate:self];
  return self;
}

- (void)showNotification:(NSString*)identifier
                   title:(NSString*)title
                subTitle:(NSString*)subtitle
         informativeText:(NSString*)informativeText
               soundName:(NSString*)soundName
         hasActionButton:(BOOL)hasActionButton
       actionButtonTitle:(NSString*)actionButtonTitle
     responsePlaceholder:(NSString*)responsePlaceholder
          hasReplyButton:(BOOL)hasReplyButton
               deliverAt:(NSString*)deliverAt {
  const Ref<TsAlert> alert = Adopt([[TsAlert alloc] init]);
  [alert setIdentifier:identifier];
  [alert setTitle:title];
  [alert setSubtitle:subtitle];
  [alert setInformativeText:informativeText];
  [alert setHasActionButton:hasActionButton];
  if (soundName != nil) [alert setSoundName:soundName];
  if (hasReplyButton) {
    [alert setHasReplyButton:YES];
    if (responsePlaceholder != nil) [alert setResponsePlaceholder:responsePlaceholder];
  } else if (hasActionButton) {
    [alert setHasActionButton:YES];
    [alert setActionButtonTitle:actionButtonTitle];
  }
  TsUserNotificationCenter* center = [TsUserNotificationCenter defaultUserNotificationCenter];
  if (deliverAt == nil) return [center deliverNotification:alert];
  NSDate* date = DeliveryDate(deliverAt);
  [alert setDeliveryDate:date];
  TsLogDebug(@"Schedule notification %@ -> %@", identifier, date);
  [center scheduleNotification:alert];
}

- (TsAlert*)findUserNotificationWithIdentifier:(NSString*)identifier {
  if (identifier == nil) return nil;
  TsUserNotificationCenter* center = [TsUserNotificationCenter defaultUserNotificationCenter];
  TsAlert* delivered = FindAlert([center deliveredNotifications], identifier);
  return delivered != nil ? delivered : FindAlert([center scheduledNotifications], identifier);
}

- (void)removeNotification:(NSString*)identifier {
  TsAlert* alert = [self findUserNotificationWithIdentifier:identifier];
  if (alert == nil) return;
  TsUserNotificationCenter* center = [TsUserNotificationCenter defaultUserNotificationCenter];
  [center removeDeliveredNotification:alert];
  [center removeScheduledNotification:alert];
}

- (void)removeNotifications {
  TsUserNotificationCenter* center = [TsUserNotificationCenter defaultUserNotificationCenter];
  for (TsAlert* alert in [center scheduledNotifications]) {
    TsLogDebug(@"removing scheduled notification %@", alert);
    [center removeScheduledNotification:alert];
  }
  [center removeAllDeliveredNotifications];
}

- (void)callbackForNotification:(TsAlert*)notification typeString:(NSString*)type {
  NSString* identifier = [notification identifier];
  if (identifier == nil) {
    TsLogWarning(@"didActivateNotification: Couldn't process activation as unique-id is nil");
    return;
  }
  NSString* response = [[notification response] string];
  TsCallback(TsSlot::NotificationActivation).Call({identifier, type, TsOrEmpty(response)});
}

// ---- The centre's delegate

- (void)userNotificationCenter:(TsUserNotificationCenter*)center didDeliverNotification:(TsAlert*)notification {
  TsLogInfo(@"didDeliverNotification: %@", notification);
  NSString* identifier = [notification identifier];
  if (identifier != nil) TsPost(@"TsNotificationDidDeliver", notification, @{@"identifier" : identifier});
}

- (BOOL)userNotificationCenter:(TsUserNotificationCenter*)center shouldActivateForNotification:(TsAlert*)notification {
  return NO;
}

- (void)userNotificationCenter:(TsUserNotificationCenter*)center didActivateNotification:(TsAlert*)notification {
  NSString* identifier = [notification identifier];
  if (identifier == nil) {
    TsLogWarning(@"Couldn't activate notification as there's no identifier");
    return;
  }
  NSString* type = TypeWord([notification activationType]);
  TsPost(@"TsNotificationDidActivate", notification, @{@"identifier" : identifier, @"type" : type});
  [self callbackForNotification:notification typeString:type];
  TsPost(@"TsNotificationActivation", nil, @{@"unique-id" : identifier, @"type" : type});
  TsLogDebug(@"didActivateNotification: (unique-id=%@) (type=%@) (response=%@)", identifier, type,
             [[notification response] string]);
}

- (BOOL)userNotificationCenter:(TsUserNotificationCenter*)center shouldPresentNotification:(TsAlert*)notification {
  return YES;
}

- (void)userNotificationCenter:(TsUserNotificationCenter*)center didDismissAlert:(TsAlert*)notification {
  NSString* identifier = [notification identifier];
  if (identifier == nil) {
    TsLogWarning(@"Couldn't dismiss alert as there's no identifier");
    return;
  }
  TsLogDebug(@"dismissed notification: %@", notification);
  [self callbackForNotification:notification typeString:@"dismissed"];
  TsPost(@"TsNotificationDidDismiss", notification, @{@"identifier" : identifier});
}

- (void)userNotificationCenter:(TsUserNotificationCenter*)center
               responseChanged:(NSAttributedString*)response
               forNotification:(TsAlert*)notification {
  [self callbackForNotification:notification typeString:@"response-changed"];
}

- (void)userNotificationCenter:(TsUserNotificationCenter*)center
            ts_couldNotDeliver:(TsAlert*)notification
                        reason:(NSString*)reason {
  TsLogWarning(@"Couldn't deliver notification %@: %@", notification, reason);
}

@end
