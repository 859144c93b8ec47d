#import "Platform/Linux/AppKit/NSMenu+PopUp.h"

#import <AppKit/AppKit.h>

#include <algorithm>

namespace {

// On the screen as a whole, if it is not larger.
NSPoint OriginOnScreen(NSPoint corner, NSSize size, NSRect screen) {
  return {std::max(std::min(corner.x, NSMaxX(screen) - size.width), NSMinX(screen)),
          std::max(std::min(corner.y, NSMaxY(screen)) - size.height, NSMinY(screen))};
}

NSEvent* MouseEvent(NSEventType type, NSPoint location, NSWindow* window) {
  return [NSEvent mouseEventWithType:type
                            location:location
                       modifierFlags:0
                           timestamp:[NSDate timeIntervalSinceReferenceDate]
                        windowNumber:[window windowNumber]
                             context:nil
                         eventNumber:0
                          clickCount:1
                            pressure:1];
}

}  // namespace

@implementation NSMenu (PopUp)

- (BOOL)popUpMenuPositioningItem:(NSMenuItem*)item atLocation:(NSPoint)location inView:(NSView*)view {
  NSWindow* window = [view window];
  const NSPoint inWindow = [view convertPoint:location toView:nil];
  // It appears at the mouse, and is tracked where it stands.
  [self displayTransient];
  NSMenuView* shown = [self menuRepresentation];
  [[shown window] setFrameOrigin:OriginOnScreen([window convertBaseToScreen:inWindow], [[shown window] frame].size,
                                                [[window screen] frame])];
  // Tracking ignores the end of the press that it takes for its beginning.
  [NSApp postEvent:MouseEvent(NSLeftMouseUp, inWindow, window) atStart:NO];
  [shown mouseDown:MouseEvent(NSLeftMouseDown, inWindow, window)];
  [self closeTransient];
  return NO;
}

@end
