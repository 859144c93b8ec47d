#import <Foundation/Foundation.h>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#import "Notifications/TsUserNotification.h"
#include "Probe.h"

// Records the notifications whose names begin with a prefix.
@interface NotificationRecorder : NSObject {
 @public
  Ref<NSString> prefix_;
  Ref<NSMutableArray> posted_;
}
@end

@implementation NotificationRecorder

- (instancetype)initWithPrefix:(NSString*)prefix {
  self = [super init];
  if (self == nil) return nil;
  prefix_ = Retain(prefix);
  posted_ = Adopt([[NSMutableArray alloc] init]);
  [[NSNotificationCenter defaultCenter] addObserver:self selector:@selector(record:) name:nil object:nil];
  return self;
}

- (void)record:(NSNotification*)notification {
  if (![[notification name] hasPrefix:prefix_]) return;
  TsAlert* alert = As<TsAlert>([notification object]);
  [posted_ addObject:@[ [notification name], OrNull([alert identifier]), OrNull([notification userInfo]) ]];
}

@end

namespace {

Ref<NotificationRecorder>& Recorder() {
  static Forever<Ref<NotificationRecorder>> recorder;
  return *recorder;
}

void record(NSString* prefix) { Recorder() = Adopt([[NotificationRecorder alloc] initWithPrefix:prefix]); }

// Name, the alert's identifier, user information.
id takeRecorded() {
  NSArray* posted = [NSArray arrayWithArray:Recorder().get()->posted_];
  [Recorder().get()->posted_ removeAllObjects];
  return posted;
}

PROBES("notifications", record, takeRecorded);

}  // namespace
