#import <Foundation/Foundation.h>

#include "Base/Ref.h"
#import "Notifications/TsUserNotification.h"
#include "Probe.h"

// Records the notifications that the module posts about alerts.
@interface NotificationRecorder : NSObject {
 @public
  NSMutableArray* posted_;
}
@end

@implementation NotificationRecorder

- (instancetype)init {
  self = [super init];
  if (self != nil) {
    posted_ = [[NSMutableArray alloc] init];
    [[NSNotificationCenter defaultCenter] addObserver:self selector:@selector(record:) name:nil object:nil];
  }
  return self;
}

- (void)record:(NSNotification*)notification {
  if (![[notification name] hasPrefix:@"TsNotification"]) return;
  const bool hasAlert = [[notification object] isKindOfClass:[TsAlert class]];
  id object = hasAlert ? [[notification object] identifier] : nil;
  [posted_ addObject:@[ [notification name], object != nil ? object : [NSNull null], [notification userInfo] ]];
}

@end

namespace {

NotificationRecorder* Recorder() {
  static NotificationRecorder* const recorder = [[NotificationRecorder alloc] init];
  return recorder;
}

void record() { Recorder(); }

id takeRecorded() {
  NSArray* posted = [NSArray arrayWithArray:Recorder()->posted_];
  [Recorder()->posted_ removeAllObjects];
  return posted;
}

NSArray* Identifiers(NSArray* alerts) {
  NSMutableArray* identifiers = [NSMutableArray array];
  for (TsAlert* alert in alerts) [identifiers addObject:[alert identifier]];
  return identifiers;
}

id alerts() {
  TsUserNotificationCenter* center = [TsUserNotificationCenter defaultUserNotificationCenter];
  return @{
    @"delivered" : Identifiers([center deliveredNotifications]),
    @"scheduled" : Identifiers([center scheduledNotifications])
  };
}

// The properties of an alert, by their names.
id describe(NSString* identifier) {
  TsAlert* alert = [[TsUserNotification sharedInstance] findUserNotificationWithIdentifier:identifier];
  NSMutableDictionary* properties = [NSMutableDictionary dictionary];
  for (NSString* key in @[
         @"identifier", @"title", @"subtitle", @"informativeText", @"soundName", @"hasActionButton",
         @"actionButtonTitle", @"hasReplyButton", @"responsePlaceholder"
       ]) {
    if (id value = [alert valueForKey:key]) [properties setObject:value forKey:key];
  }
  if (NSDate* due = [alert deliveryDate]) [properties setObject:@([due timeIntervalSince1970]) forKey:@"deliveryDate"];
  return properties;
}

// An alert as the centre passes it to its delegate: of any activation type, with or without identifier and response.
TsAlert* NewAlert(NSString* identifier, int type, NSString* response) {
  auto alert = Adopt([[TsAlert alloc] init]);
  [alert setIdentifier:identifier];
  [alert setActivationType:type response:response];
  return alert.Autoreleased();
}

void activate(NSString* identifier, int type, NSString* response) {
  [[TsUserNotification sharedInstance] userNotificationCenter:nil
                                      didActivateNotification:NewAlert(identifier, type, response)];
}

void deliver(NSString* identifier) {
  [[TsUserNotification sharedInstance] userNotificationCenter:nil didDeliverNotification:NewAlert(identifier, 0, nil)];
}

void dismiss(NSString* identifier) {
  [[TsUserNotification sharedInstance] userNotificationCenter:nil didDismissAlert:NewAlert(identifier, 0, nil)];
}

void changeResponse(NSString* identifier, NSString* response) {
  TsAlert* alert = NewAlert(identifier, 0, response);
  [[TsUserNotification sharedInstance] userNotificationCenter:nil
                                              responseChanged:[alert response]
                                              forNotification:alert];
}

}  // namespace

void AttachNotificationsProbe(v8::Local<v8::Object> exports) {
  PROBE(record);
  PROBE(takeRecorded);
  PROBE(alerts);
  PROBE(describe);
  PROBE(activate);
  PROBE(deliver);
  PROBE(dismiss);
  PROBE(changeResponse);
}
