#import "native/NotificationRelay.h"

#import <Foundation/Foundation.h>

#include "native/ScriptEvents.h"

static id OrNull(id object) { return object != nil ? object : [NSNull null]; }

@implementation NotificationRelay

- (instancetype)initWithEvents:(const ScriptEvents*)events {
  self = [super init];
  if (self == nil) return nil;
  _events = events;
  [[NSNotificationCenter defaultCenter] addObserver:self selector:@selector(relay:) name:nil object:nil];
  return self;
}

- (void)dealloc {
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  [super dealloc];
}

- (void)relay:(NSNotification*)notification {
  NSString* name = [notification name];
  if (![name hasPrefix:@"Ts"] && ![name hasPrefix:@"kTs"]) return;
  // Script runs on the main thread only. Cocoa posts on other threads too; the module doesn't.
  if (![NSThread isMainThread]) return NSLog(@"%@ was posted on another thread and is not relayed", name);
  _events->Emit(@"notification", @{
    @"name" : name,
    @"object" : OrNull([[notification object] description]),
    @"userInfo" : OrNull([notification userInfo]),
  });
}

@end
