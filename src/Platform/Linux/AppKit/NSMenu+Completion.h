#pragma once

#import <AppKit/NSMenu.h>

@interface NSMenu (Completion)

- (void)removeAllItems;

// Shows the menu with its upper left corner at a point of the view, and tracks the mouse until the menu closes. Ignores
// `item`. Always NO: GNUstep does not report whether the user chose an item.
- (BOOL)popUpMenuPositioningItem:(NSMenuItem*)item atLocation:(NSPoint)location inView:(NSView*)view;

@end
