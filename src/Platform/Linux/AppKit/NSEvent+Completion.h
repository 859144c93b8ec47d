#pragma once

#import <AppKit/NSEvent.h>

#include <functional>

// GNUstep has no event monitors. As Cocoa's they see each event that the application is about to dispatch, before its
// own sendEvent:, the latest monitor first, and hand on the event, another one in its place, or nil for none.
@interface NSEvent (Completion)

// The caller does not own the monitor. `handler` must not throw C++ exceptions.
+ (id)addLocalMonitorForEventsMatchingMask:(NSUInteger)mask handler:(std::function<NSEvent*(NSEvent*)>)handler;
+ (void)removeMonitor:(id)monitor;

@end
