#import <AppKit/AppKit.h>

#include "Platform/Linux/AppKit/Completion.h"
#include "Platform/Linux/AppKit/ReplacedMethod.h"

@interface NSApplication (Completion)
@end

@implementation NSApplication (Completion)

// GNUstep returns an uninitialised event in place of nil.
- (NSEvent*)currentEvent {
  return static_cast<int>([_current_event type]) == 0 ? nil : _current_event;
}

@end

namespace tessaro::platform {

namespace {

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
