#pragma once

#import <AppKit/NSImage.h>

// Template images are shapes, drawn in the colour of their surroundings. As on a Mac, an image whose name ends with
// "Template" is a template by default.
@interface NSImage (Template)

- (BOOL)isTemplate;
- (void)setTemplate:(BOOL)isTemplate;

@end
