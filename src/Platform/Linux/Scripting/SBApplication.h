#pragma once

#import <Foundation/NSDistantObject.h>
#import <Foundation/NSString.h>

#include "Base/Ref.h"

// Forwards scripting messages to another application. GNUstep has no ScriptingBridge: here applications publish an
// object under their bundle identifier by Distributed Objects.
//
// A message launches the application if necessary. A message that can't be delivered or is not answered in time is
// logged and returns nil. One thread an instance.
@interface SBApplication : NSObject {
  Ref<NSString> _identifier;
  Ref<NSDistantObject> _remote;
}

// nil when the application isn't installed.
+ (instancetype)applicationWithBundleIdentifier:(NSString*)identifier;

- (BOOL)isRunning;
- (void)activate;

@end
