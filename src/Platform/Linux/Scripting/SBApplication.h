#pragma once

#import <Foundation/NSDistantObject.h>
#import <Foundation/NSString.h>

#include "Base/Ref.h"

// Another application as an object, which takes the messages that it can be scripted with. GNUstep has no
// ScriptingBridge: here the application offers an object under the name of its bundle identifier, by Distributed
// Objects.
//
// It is started when it isn't running and a message is sent. A message that can't be delivered, or isn't answered in
// time, gives nothing, and the log tells. An instance belongs to one thread.
@interface SBApplication : NSObject {
  Ref<NSString> _identifier;
  Ref<NSDistantObject> _remote;
}

// nil when it isn't installed.
+ (instancetype)applicationWithBundleIdentifier:(NSString*)identifier;

- (BOOL)isRunning;
- (void)activate;

@end
