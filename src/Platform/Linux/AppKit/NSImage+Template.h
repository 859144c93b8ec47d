#pragma once

#import <AppKit/NSImage.h>

// Images that are only a shape, drawn in the colour of their surroundings. As on a Mac, an image whose name ends with
// "Template" is one by default.
@interface NSImage (Template)

- (BOOL)isTemplate;
- (void)setTemplate:(BOOL)isTemplate;

@end
