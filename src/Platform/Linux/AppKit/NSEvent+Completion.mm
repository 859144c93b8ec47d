#import "Platform/Linux/AppKit/NSEvent+Completion.h"

#import <AppKit/AppKit.h>

#include <utility>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Platform/Linux/AppKit/ReplacedMethod.h"
#include "Platform/Linux/Keyboard/ModifierMasks.h"

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

namespace {

tessaro::platform::ReplacedMethod<void (*)(NSApplication*, SEL, NSEvent*)> sendEvent;

NSMutableArray* Monitors() {
  static Forever<Ref<NSMutableArray>> monitors(Adopt([[NSMutableArray alloc] init]));
  return monitors->get();
}

void SendEvent(NSApplication* application, SEL selector, NSEvent* event) {
  // A monitor may remove itself.
  for (TsLocalMonitor* monitor in [[NSArray arrayWithArray:Monitors()] reverseObjectEnumerator]) {
    event = [monitor pass:event];
    if (event == nil) return;
  }
  sendEvent(application, selector, event);
}

void WatchEvents() {
  static const bool isWatching = (sendEvent.With([NSApp class], "sendEvent:", SendEvent), true);
  static_cast<void>(isWatching);
}

}  // namespace

@implementation NSEvent (Completion)

// GNUstep's own always returns 0.
+ (NSEventModifierFlags)modifierFlags {
  const auto held = tessaro::platform::CurrentModifiers();
  return (held.command ? NSCommandKeyMask : 0) | (held.option ? NSAlternateKeyMask : 0) |
         (held.control ? NSControlKeyMask : 0) | (held.shift ? NSShiftKeyMask : 0) |
         (held.capsLock ? NSAlphaShiftKeyMask : 0);
}

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
