#import "native/RunLoopProbe.h"

#include <uv.h>

#include <thread>
#include <vector>

#include "native/ScriptEvents.h"
#include "native/SyntheticKey.h"

static double Now() { return static_cast<double>(uv_hrtime()); }

@implementation RunLoopProbe

- (instancetype)initWithEvents:(const ScriptEvents*)events {
  self = [super init];
  if (self) _events = events;
  return self;
}

- (void)startTimer:(NSDictionary*)options {
  const NSTimeInterval interval = [[options objectForKey:@"interval"] doubleValue];
  const int count = [[options objectForKey:@"count"] intValue];
  const double start = Now();
  for (int i = 1; i <= count; ++i) {
    [self performSelector:@selector(timerFired:) withObject:@(start + i * interval * 1e9) afterDelay:i * interval];
  }
}

- (void)timerFired:(NSNumber*)due {
  _events->Emit(@"probe", @{@"name" : @"timer", @"due" : due, @"fired" : @(Now())});
}

- (void)callFromThread:(id)unused {
  std::thread([self] {
    GSRegisterCurrentThread();
    @autoreleasepool {
      [self performSelectorOnMainThread:@selector(threadCalled:) withObject:@(Now()) waitUntilDone:NO];
    }
    GSUnregisterCurrentThread();
  }).detach();
}

- (void)threadCalled:(NSNumber*)sent {
  _events->Emit(@"probe", @{@"name" : @"thread-call", @"sent" : sent, @"arrived" : @(Now())});
}

- (void)raiseInLoop:(id)unused {
  [[NSRunLoop currentRunLoop] performSelector:@selector(raise:)
                                       target:self
                                     argument:nil
                                        order:0
                                        modes:@[ NSDefaultRunLoopMode ]];
}

- (void)raiseOnNotification:(NSString*)name {
  [[NSNotificationCenter defaultCenter] addObserver:self selector:@selector(raise:) name:name object:nil];
}

- (void)raiseOnThread:(id)unused {
  [NSThread detachNewThreadSelector:@selector(raise:) toTarget:self withObject:nil];
}

- (void)raise:(id)unused {
  [NSException raise:NSGenericException format:@"raised by a probe"];
}

- (void)postLater:(NSString*)name {
  [self performSelector:@selector(post:) withObject:name afterDelay:0];
}

- (void)post:(NSString*)name {
  [[NSNotificationCenter defaultCenter] postNotificationName:name object:nil];
}

- (void)sendKey:(NSDictionary*)options {
  const unsigned long window = [[options objectForKey:@"window"] unsignedLongValue];
  const unsigned keycode = [[options objectForKey:@"keycode"] unsignedIntValue];
  std::vector<unsigned> held;
  for (NSNumber* modifier in static_cast<NSArray*>([options objectForKey:@"held"])) {
    held.push_back([modifier unsignedIntValue]);
  }
  const std::uint64_t sent = SendSyntheticKey(window, keycode, held);
  _events->Emit(@"probe", @{@"name" : @"key-sent", @"sent" : @(static_cast<double>(sent))});
}

@end
