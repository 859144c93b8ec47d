#pragma once

#import <AppKit/NSMenuItem.h>

// GNUstep's items can't be hidden, and keep only the text of an attributed title. A hidden item keeps its place in its
// menu, but is not shown, and has no key equivalent.
@interface NSMenuItem (Completion)

- (BOOL)isHidden;
- (void)setHidden:(BOOL)hidden;

- (NSAttributedString*)attributedTitle;
- (void)setAttributedTitle:(NSAttributedString*)title;

@end
