#import "Platform/Linux/AppKit/NSEvent+LocalMonitor.h"

#import <AppKit/AppKit.h>

#include <utility>

#include "Base/Ref.h"
#include "Base/TsReplaceMethod.h"

@interface TsLocalMonitor : NSObject {
  NSUInteger _mask;
  std::function<NSEvent*(NSEvent*)> _handler;
}
- (instancetype)initWithMask:(NSUInteger)mask handler:(std::function<NSEvent*(NSEvent*)>)handler;
- (NSEvent*)pass:(NSEvent*)event;
@end

@implementation TsLocalMonitor

- (instancetype)initWithMask:(NSUInteger)mask handler:(std::function<NSEvent*(NSEvent*)>)handler {
  self = [super init];
  if (self == nil) return nil;
  _mask = mask;
  _handler = std::move(handler);
  return self;
}

- (NSEvent*)pass:(NSEvent*)event {
  return (_mask & NSEventMaskFromType([event type])) != 0 ? _handler(event) : event;
}

@end

@interface NSObject (TsUnmonitored)
- (void)tsSendUnmonitoredEvent:(NSEvent*)event;
@end

namespace {

NSMutableArray* Monitors() {
  static NSMutableArray* const monitors = [[NSMutableArray alloc] init];
  return monitors;
}

void SendEvent(NSApplication* application, SEL, NSEvent* event) {
  // A monitor may remove itself.
  for (TsLocalMonitor* monitor in [[NSArray arrayWithArray:Monitors()] reverseObjectEnumerator]) {
    event = [monitor pass:event];
    if (event == nil) return;
  }
  [application tsSendUnmonitoredEvent:event];
}

void WatchEvents() {
  static const IMP previous = TsReplaceMethod([NSApp class], @selector(sendEvent:), @selector(tsSendUnmonitoredEvent:),
                                              reinterpret_cast<IMP>(SendEvent));
  static_cast<void>(previous);
}

}  // namespace

@implementation NSEvent (LocalMonitor)

+ (id)addLocalMonitorForEventsMatchingMask:(NSUInteger)mask handler:(std::function<NSEvent*(NSEvent*)>)handler {
  WatchEvents();
  auto monitor = Adopt([[TsLocalMonitor alloc] initWithMask:mask handler:std::move(handler)]);
  [Monitors() addObject:monitor];
  return monitor.Autoreleased();
}

+ (void)removeMonitor:(id)monitor {
  [Monitors() removeObjectIdenticalTo:monitor];
}

@end
