#pragma once

#import <Foundation/NSObject.h>

class ScriptEvents;

// Hands every notification that the module posts (its name begins with "Ts" or "kTs") to script, as a "notification"
// with "name", "object" (its description, or null) and "userInfo".
@interface NotificationRelay : NSObject {
  const ScriptEvents* _events;
}

// `events` must outlive the relay.
- (instancetype)initWithEvents:(const ScriptEvents*)events;

@end
