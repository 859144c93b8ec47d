#pragma once

#import <AppKit/NSMenu.h>

@interface NSMenu (Completion)

- (void)removeAllItems;

// Shows the menu with its upper left corner, whatever `item` is, at a point of the view, and follows the mouse until it
// chooses or leaves. Whether something was chosen is not known.
- (BOOL)popUpMenuPositioningItem:(NSMenuItem*)item atLocation:(NSPoint)location inView:(NSView*)view;

@end

namespace tessaro::platform {

// Says to the menu's delegate that it opens, unless it is open.
void MenuWillOpen(NSMenu* menu);

}  // namespace tessaro::platform
