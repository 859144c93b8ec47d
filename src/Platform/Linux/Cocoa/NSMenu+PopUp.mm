#import "Platform/Linux/Cocoa/NSMenu+PopUp.h"

#import <AppKit/AppKit.h>

#include <algorithm>

namespace {

// On the screen as a whole, if it is not larger.
NSPoint OriginOnScreen(NSPoint corner, NSSize size, NSRect screen) {
  return {std::max(std::min(corner.x, NSMaxX(screen) - size.width), NSMinX(screen)),
          std::max(std::min(corner.y, NSMaxY(screen)) - size.height, NSMinY(screen))};
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
  [shown mouseDown:[NSEvent mouseEventWithType:NSLeftMouseDown
                                      location:inWindow
                                 modifierFlags:0
                                     timestamp:[NSDate timeIntervalSinceReferenceDate]
                                  windowNumber:[window windowNumber]
                                       context:nil
                                   eventNumber:0
                                    clickCount:1
                                      pressure:1]];
  [self closeTransient];
  return NO;
}

@end
