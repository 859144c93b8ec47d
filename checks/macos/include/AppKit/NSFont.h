#pragma once

#include <AppKit/AppKitDefines.h>

APPKIT_EXTERN NSString* const NSFontWeightTrait;
@interface NSFont : NSObject <NSCopying>
+ (NSFont*)systemFontOfSize:(CGFloat)size;
+ (NSFont*)boldSystemFontOfSize:(CGFloat)size;
+ (NSFont*)menuFontOfSize:(CGFloat)size;
+ (NSFont*)menuBarFontOfSize:(CGFloat)size;
@property(class, readonly) CGFloat systemFontSize;
@property(class, readonly) CGFloat smallSystemFontSize;
@property(readonly) CGFloat pointSize;
@property(readonly) CGFloat ascender;
@property(readonly) CGFloat descender;
@end

APPKIT_EXTERN NSAttributedStringKey const NSFontAttributeName;
APPKIT_EXTERN NSAttributedStringKey const NSForegroundColorAttributeName;
APPKIT_EXTERN NSAttributedStringKey const NSParagraphStyleAttributeName;

enum NSTextAlignment : NSInteger { NSTextAlignmentLeft = 0, NSTextAlignmentCenter = 1, NSTextAlignmentRight = 2 };
static const NSTextAlignment NSCenterTextAlignment API_DEPRECATED("", macos(10.0, 10.12)) = NSTextAlignmentCenter;
static const NSTextAlignment NSRightTextAlignment API_DEPRECATED("", macos(10.0, 10.12)) = NSTextAlignmentRight;
enum NSLineBreakMode : NSUInteger { NSLineBreakByWordWrapping = 0, NSLineBreakByTruncatingTail = 4 };

@interface NSParagraphStyle : NSObject <NSCopying, NSMutableCopying>
@end
@interface NSMutableParagraphStyle : NSParagraphStyle
@property NSTextAlignment alignment;
@property NSLineBreakMode lineBreakMode;
@end

@interface NSString (StringDrawing)
- (NSSize)sizeWithAttributes:(NSDictionary*)attributes;
- (void)drawAtPoint:(NSPoint)point withAttributes:(NSDictionary*)attributes;
- (void)drawInRect:(NSRect)rect withAttributes:(NSDictionary*)attributes;
@end
@interface NSAttributedString (StringDrawing)
- (NSSize)size;
- (void)drawAtPoint:(NSPoint)point;
@end
