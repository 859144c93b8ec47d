#pragma once

#import <Foundation/Foundation.h>

class ScriptEvents;

// Actions on the event loop for tests and benchmarks. Results are "probe" events with "name" and the named values.
// Times are nanoseconds of the monotonic clock.
@interface RunLoopProbe : NSObject {
  const ScriptEvents* _events;
}

// `events` must outlive the probe.
- (instancetype)initWithEvents:(const ScriptEvents*)events;

// An NSTimer that fires {"count"} times at {"interval"} seconds: "timer" with "due" and "fired".
- (void)startTimer:(NSDictionary*)options;

// performSelectorOnMainThread: from a thread of its own: "thread-call" with "sent" and "arrived".
- (void)callFromThread:(id)unused;

- (void)raise:(id)unused;

// Raises, from a call that the event loop makes.
- (void)raiseInLoop:(id)unused;

// Raises when the notification of this name is posted.
- (void)raiseOnNotification:(NSString*)name;

// Raises on a thread without a handler.
- (void)raiseOnThread:(id)unused;

// Posts a notification of this name on a later turn of the event loop.
- (void)postLater:(NSString*)name;

// Sends {"window", "keycode"} a key press through the X server, while the keys of "held" are held: "key-sent" with
// "sent".
- (void)sendKey:(NSDictionary*)options;

@end
