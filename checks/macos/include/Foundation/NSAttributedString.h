#pragma once

#include <Foundation/NSDictionary.h>

using NSAttributedStringKey = NSString*;
@interface NSAttributedString : NSObject <NSCopying, NSMutableCopying, NSSecureCoding>
- (instancetype)initWithString:(NSString*)string;
- (instancetype)initWithString:(NSString*)string attributes:(NSDictionary*)attributes;
@property(readonly, copy) NSString* string;
@property(readonly) NSUInteger length;
- (NSDictionary*)attributesAtIndex:(NSUInteger)index effectiveRange:(NSRange*)range;
@end
@interface NSMutableAttributedString : NSAttributedString
- (void)appendAttributedString:(NSAttributedString*)string;
@end
