#pragma once

#import "Platform/Cocoa.h"

@interface NSImage (TsTint)

// A copy that has the image's shape in one flat colour.
- (NSImage*)ts_tintedImageWithColor:(NSColor*)color;

@end
