#pragma once

#import <Foundation/NSDistantObject.h>
#import <Foundation/NSString.h>

#include "Base/Ref.h"

// Another application as an object that takes its scripting messages. GNUstep has no ScriptingBridge: here applications
// publish an object under their bundle identifier, by Distributed Objects.
//
// Sending a message launches the application where necessary. A message that can't be delivered, or gets no answer in
// time, is logged and returns nothing. An instance belongs to one thread.
@interface SBApplication : NSObject {
  Ref<NSString> _identifier;
  Ref<NSDistantObject> _remote;
}

// nil when the application isn't installed.
+ (instancetype)applicationWithBundleIdentifier:(NSString*)identifier;

- (BOOL)isRunning;
- (void)activate;

@end
