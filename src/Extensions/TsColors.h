#pragma once

#import "Platform/Cocoa.h"

@interface NSColor (TsHex)

// The opaque calibrated colour that six hexadecimal digits name: red, green, blue. Black for nil and for a text that
// begins with no hexadecimal number.
+ (NSColor*)ts_colorWithHexColorString:(NSString*)string;

@end

@interface NSImage (TsTint)

// A copy that has the image's shape in one flat colour.
- (NSImage*)ts_tintedImageWithColor:(NSColor*)color;

@end
