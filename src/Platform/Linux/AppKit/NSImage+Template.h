#pragma once

#import <AppKit/NSImage.h>

// Images that are a shape only, to be drawn in the colour of what is around them. As on a Mac, an image whose name ends
// with "Template" is one from the beginning.
@interface NSImage (Template)

- (BOOL)isTemplate;
- (void)setTemplate:(BOOL)isTemplate;

@end
