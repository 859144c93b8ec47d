#import "Notifications/TsUserNotification.h"

#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Utilities/TsCallbackSlot.h"

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
  // Foundation is seconds at work on describing the years that 64 bits reach.
  return [date earlierDate:[NSDate distantFuture]];
}

NSUserNotification* FindAlert(NSArray* alerts, NSString* identifier) {
  for (NSUserNotification* alert in alerts) {
    if ([[alert identifier] isEqualToString:identifier]) return alert;
  }
  return nil;
}

void Post(NSString* name, id object, NSDictionary* userInfo) {
  [[NSNotificationCenter defaultCenter] postNotificationName:name object:object userInfo:userInfo];
}

}  // namespace

@implementation TsUserNotification

+ (instancetype)sharedInstance {
  static TsUserNotification* const instance = [[self alloc] init];
  return instance;
}

- (instancetype)init {
  self = [super init];
  if (self != nil) [[NSUserNotificationCenter defaultUserNotificationCenter] setDelegate:self];
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
  const Ref<NSUserNotification> alert = Adopt([[NSUserNotification alloc] init]);
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
  NSUserNotificationCenter* center = [NSUserNotificationCenter defaultUserNotificationCenter];
  if (deliverAt == nil) return [center deliverNotification:alert];
  NSDate* date = DeliveryDate(deliverAt);
  [alert setDeliveryDate:date];
  TsLogDebug(@"Schedule notification %@ -> %@", identifier, date);
  [center scheduleNotification:alert];
}

- (NSUserNotification*)findUserNotificationWithIdentifier:(NSString*)identifier {
  if (identifier == nil) return nil;
  NSUserNotificationCenter* center = [NSUserNotificationCenter defaultUserNotificationCenter];
  NSUserNotification* delivered = FindAlert([center deliveredNotifications], identifier);
  return delivered != nil ? delivered : FindAlert([center scheduledNotifications], identifier);
}

- (void)removeNotification:(NSString*)identifier {
  NSUserNotification* alert = [self findUserNotificationWithIdentifier:identifier];
  if (alert == nil) return;
  NSUserNotificationCenter* center = [NSUserNotificationCenter defaultUserNotificationCenter];
  [center removeDeliveredNotification:alert];
  [center removeScheduledNotification:alert];
}

- (void)removeNotifications {
  NSUserNotificationCenter* center = [NSUserNotificationCenter defaultUserNotificationCenter];
  for (NSUserNotification* alert in [center scheduledNotifications]) {
    TsLogDebug(@"removing scheduled notification %@", alert);
    [center removeScheduledNotification:alert];
  }
  [center removeAllDeliveredNotifications];
}

- (void)callbackForNotification:(NSUserNotification*)notification typeString:(NSString*)type {
  NSString* identifier = [notification identifier];
  if (identifier == nil) {
    TsLogWarning(@"didActivateNotification: Couldn't process activation as unique-id is nil");
    return;
  }
  NSString* response = [[notification response] string];
  TsCallbackSlots::Shared().notificationActivation.Call({identifier, type, response != nil ? response : @""});
}

// ---- The centre's delegate

- (void)userNotificationCenter:(NSUserNotificationCenter*)center
        didDeliverNotification:(NSUserNotification*)notification {
  TsLogInfo(@"didDeliverNotification: %@", notification);
  NSString* identifier = [notification identifier];
  if (identifier != nil) Post(@"TsNotificationDidDeliver", notification, @{@"identifier" : identifier});
}

- (BOOL)userNotificationCenter:(NSUserNotificationCenter*)center
    shouldActivateForNotification:(NSUserNotification*)notification {
  return NO;
}

- (void)userNotificationCenter:(NSUserNotificationCenter*)center
       didActivateNotification:(NSUserNotification*)notification {
  NSString* identifier = [notification identifier];
  if (identifier == nil) {
    TsLogWarning(@"Couldn't activate notification as there's no identifier");
    return;
  }
  NSString* type = TypeWord([notification activationType]);
  Post(@"TsNotificationDidActivate", notification, @{@"identifier" : identifier, @"type" : type});
  [self callbackForNotification:notification typeString:type];
  Post(@"TsNotificationActivation", nil, @{@"unique-id" : identifier, @"type" : type});
  TsLogDebug(@"didActivateNotification: (unique-id=%@) (type=%@) (response=%@)", identifier, type,
             [[notification response] string]);
}

- (BOOL)userNotificationCenter:(NSUserNotificationCenter*)center
     shouldPresentNotification:(NSUserNotification*)notification {
  return YES;
}

- (void)userNotificationCenter:(NSUserNotificationCenter*)center didDismissAlert:(NSUserNotification*)notification {
  NSString* identifier = [notification identifier];
  if (identifier == nil) {
    TsLogWarning(@"Couldn't dismiss alert as there's no identifier");
    return;
  }
  TsLogDebug(@"dismissed notification: %@", notification);
  [self callbackForNotification:notification typeString:@"dismissed"];
  Post(@"TsNotificationDidDismiss", notification, @{@"identifier" : identifier});
}

- (void)userNotificationCenter:(NSUserNotificationCenter*)center
               responseChanged:(NSAttributedString*)response
               forNotification:(NSUserNotification*)notification {
  [self callbackForNotification:notification typeString:@"response-changed"];
}

// Where a centre can't do what it was asked for, as on Linux, it says so.
- (void)userNotificationCenter:(NSUserNotificationCenter*)center
            ts_couldNotDeliver:(NSUserNotification*)notification
                        reason:(NSString*)reason {
  TsLogWarning(@"Couldn't deliver notification %@: %@", notification, reason);
}

@end
