#pragma once

#import <Foundation/NSString.h>

@interface NSString (TsFormat)

// The first `length` UTF-16 units, or fewer so that no character is cut in two.
- (NSString*)ts_prefixOfLength:(NSUInteger)length;

// For formats from outside, such as translations: a format that asks for other arguments is logged and returned as it
// is.

// Fills in a text ("%@").
- (NSString*)ts_formatWithText:(NSString*)text;

// Fills in a text ("%@") and an integer ("%d", "%ld" …), in this order, unless the format numbers them ("%2$ld").
- (NSString*)ts_formatWithText:(NSString*)text number:(NSInteger)number;

@end
