#pragma once

#import <AppKit/NSEvent.h>

#include <functional>

// GNUstep has no event monitors. Like Cocoa's, these get each event before the application's sendEvent:, the latest
// monitor first, and return the event, a replacement, or nil to stop the event.
@interface NSEvent (Completion)

// The caller does not own the monitor. `handler` must not throw C++ exceptions.
+ (id)addLocalMonitorForEventsMatchingMask:(NSUInteger)mask handler:(std::function<NSEvent*(NSEvent*)>)handler;
+ (void)removeMonitor:(id)monitor;

@end
