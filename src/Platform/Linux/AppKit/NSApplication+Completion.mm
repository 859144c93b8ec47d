#import "Platform/Linux/AppKit/CocoaAdditions.h"

#include <utility>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Platform/Linux/AppKit/Completion.h"
#include "Platform/Linux/AppKit/ReplacedMethod.h"
#include "Platform/Linux/Keyboard/ModifierKeys.h"

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

namespace tessaro::platform {

namespace {

// ---- Events

ReplacedMethod<void (*)(NSApplication*, SEL, NSEvent*)> sendEvent;

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
  [[maybe_unused]] static const bool isWatching = (sendEvent.With([NSApp class], "sendEvent:", SendEvent), true);
}

// ---- Hiding

ReplacedMethod<void (*)(NSApplication*, SEL, id)> hide;
ReplacedMethod<BOOL (*)(NSApplication*, SEL)> isHidden;

bool wasHidden = false;

// Other windows, such as the icons of miniaturized ones, stay on screen while the application is hidden.
bool HasWindowOnScreen(NSApplication* application) {
  for (NSWindow* window in [application windows]) {
    const bool canHide = ([window styleMask] & NSMiniaturizableWindowMask) != 0;
    if (canHide && [window isVisible] && ![window isMiniaturized]) return true;
  }
  return false;
}

// GNUstep hides an application without a desktop icon by miniaturizing its windows, but does not report the application
// as hidden, and leaves the keyboard to the window manager, whose change of focus it may miss. Any window that comes
// back shows the application again.
void Hide(NSApplication* application, SEL selector, id sender) {
  hide(application, selector, sender);
  [[application keyWindow] resignKeyWindow];
  [[application mainWindow] resignMainWindow];
  wasHidden = true;
}

BOOL IsHidden(NSApplication* application, SEL selector) {
  wasHidden = wasHidden && !HasWindowOnScreen(application);
  return wasHidden || isHidden(application, selector);
}

}  // namespace

void CompleteApplication() {
  hide.With([NSApplication class], "hide:", Hide);
  isHidden.With([NSApplication class], "isHidden", IsHidden);
}

}  // namespace tessaro::platform

using namespace tessaro::platform;

@interface NSApplication (Completion)
@end

@implementation NSApplication (Completion)

// GNUstep returns an uninitialised event in place of nil.
- (NSEvent*)currentEvent {
  return static_cast<int>([_current_event type]) == 0 ? nil : _current_event;
}

@end

@implementation NSEvent (Completion)

// GNUstep's own always returns 0.
+ (NSEventModifierFlags)modifierFlags {
  const HeldModifiers held = CurrentModifiers();
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
