#include "NotificationsProbe.h"

#import <Foundation/Foundation.h>

#include "Base/Ref.h"
#import "Notifications/TsSound.h"
#import "Notifications/TsUserNotification.h"
#include "Probe.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsScriptValues.h"

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

void Return(ProbeArguments args, id object) {
  v8::Local<v8::String> string;
  if (ToScriptString(args.GetIsolate(), TsConvertToJSONString(object)).ToLocal(&string)) {
    args.GetReturnValue().Set(string);
  }
}

void record(ProbeArguments) { Recorder(); }

void takeRecorded(ProbeArguments args) {
  Return(args, Recorder()->posted_);
  [Recorder()->posted_ removeAllObjects];
}

NSArray* Identifiers(NSArray* alerts) {
  NSMutableArray* identifiers = [NSMutableArray array];
  for (TsAlert* alert in alerts) [identifiers addObject:[alert identifier]];
  return identifiers;
}

void alerts(ProbeArguments args) {
  TsUserNotificationCenter* center = [TsUserNotificationCenter defaultUserNotificationCenter];
  Return(args, @{
    @"delivered" : Identifiers([center deliveredNotifications]),
    @"scheduled" : Identifiers([center scheduledNotifications])
  });
}

// The properties of an alert, by their names.
void describe(ProbeArguments args) {
  TsAlert* alert = [[TsUserNotification sharedInstance] findUserNotificationWithIdentifier:convertToNSString(args[0])];
  if (alert == nil) return args.GetReturnValue().SetNull();
  NSMutableDictionary* properties = [NSMutableDictionary dictionary];
  for (NSString* key in @[
         @"identifier", @"title", @"subtitle", @"informativeText", @"soundName", @"hasActionButton",
         @"actionButtonTitle", @"hasReplyButton", @"responsePlaceholder"
       ]) {
    if (id value = [alert valueForKey:key]) [properties setObject:value forKey:key];
  }
  if (NSDate* due = [alert deliveryDate]) {
    [properties setObject:[NSNumber numberWithDouble:[due timeIntervalSince1970]] forKey:@"deliveryDate"];
  }
  Return(args, properties);
}

// An alert as the centre passes it to its delegate: of any activation type, with or without identifier and response.
Ref<TsAlert> AlertFrom(ProbeArguments args) {
  auto alert = Adopt([[TsAlert alloc] init]);
  [alert setIdentifier:convertToNSString(args[0])];
  [alert setActivationType:args[1].As<v8::Int32>()->Value() response:convertToNSString(args[2])];
  return alert;
}

void activate(ProbeArguments args) {
  [[TsUserNotification sharedInstance] userNotificationCenter:nil didActivateNotification:AlertFrom(args)];
}

void deliver(ProbeArguments args) {
  [[TsUserNotification sharedInstance] userNotificationCenter:nil didDeliverNotification:AlertFrom(args)];
}

void dismiss(ProbeArguments args) {
  [[TsUserNotification sharedInstance] userNotificationCenter:nil didDismissAlert:AlertFrom(args)];
}

void changeResponse(ProbeArguments args) {
  const auto alert = AlertFrom(args);
  [[TsUserNotification sharedInstance] userNotificationCenter:nil
                                              responseChanged:[alert response]
                                              forNotification:alert];
}

void compareSounds(ProbeArguments args) {
  TsSound* one = [TsSound soundWithPath:convertToNSString(args[0])];
  TsSound* other = [TsSound soundWithPath:convertToNSString(args[1])];
  Return(args, @[
    [NSNumber numberWithBool:[one isEqual:other]], [NSNumber numberWithBool:[one hash] == [other hash]],
    [one description] != nil ? [one description] : [NSNull null]
  ]);
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
  PROBE(compareSounds);
}
