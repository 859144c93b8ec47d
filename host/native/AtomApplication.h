#pragma once

#import <AppKit/NSApplication.h>

#include "Base/Ref.h"

@class NSMutableArray;

// The application object.
@interface AtomApplication : NSApplication {
  Ref<NSMutableArray> _keyArrivals;
}

// The latest key presses as they reached sendEvent:, each a dictionary: "characters", "keyCode", "modifiers",
// "arrival" (nanoseconds of the monotonic clock) and "serverTime" (the X server's own time stamp in milliseconds).
- (NSArray*)keyArrivals;

@end
