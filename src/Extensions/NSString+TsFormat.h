#pragma once

#import <Foundation/NSString.h>

// Formats that come from outside, such as translations. One that asks for other arguments than it gets is given back
// as it is, and the log says so.
@interface NSString (TsFormat)

// Fills in a text ("%@").
- (NSString*)ts_formatWithText:(NSString*)text;

// Fills in a text ("%@") and an integer ("%d", "%ld" …), in this order, unless the format numbers them ("%2$ld").
- (NSString*)ts_formatWithText:(NSString*)text number:(NSInteger)number;

@end
