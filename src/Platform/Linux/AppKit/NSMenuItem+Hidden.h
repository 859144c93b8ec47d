#pragma once

#import <AppKit/NSMenuItem.h>

// GNUstep's items can't be hidden. A hidden item keeps its place in its menu, but is not shown, and has no key
// equivalent.
@interface NSMenuItem (Hidden)

- (BOOL)isHidden;
- (void)setHidden:(BOOL)hidden;

@end
