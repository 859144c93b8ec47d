#pragma once

#include <AppKit/AppKitDefines.h>

enum NSCompositingOperation : NSUInteger {
  NSCompositingOperationCopy = 1,
  NSCompositingOperationSourceOver = 2,
  NSCompositingOperationSourceIn = 3,
  NSCompositingOperationSourceAtop = 5,
};
#define CHECK_OLD_OPERATION(old, now) \
  static const NSCompositingOperation old API_DEPRECATED("", macos(10.0, 10.12)) = now
CHECK_OLD_OPERATION(NSCompositeCopy, NSCompositingOperationCopy);
CHECK_OLD_OPERATION(NSCompositeSourceOver, NSCompositingOperationSourceOver);
CHECK_OLD_OPERATION(NSCompositeSourceIn, NSCompositingOperationSourceIn);
CHECK_OLD_OPERATION(NSCompositeSourceAtop, NSCompositingOperationSourceAtop);

using NSColorSpaceName = NSString*;
APPKIT_EXTERN NSColorSpaceName const NSDeviceRGBColorSpace;
APPKIT_EXTERN NSColorSpaceName const NSCalibratedRGBColorSpace;
APPKIT_EXTERN void NSRectFill(NSRect rect);
APPKIT_EXTERN void NSRectFillUsingOperation(NSRect rect, NSCompositingOperation operation);
APPKIT_EXTERN void NSFrameRect(NSRect rect);
APPKIT_EXTERN void NSRectClip(NSRect rect);

@interface NSGraphicsContext : NSObject
@property(class, strong) NSGraphicsContext* currentContext;
+ (NSGraphicsContext*)graphicsContextWithBitmapImageRep:(NSBitmapImageRep*)rep;
+ (NSGraphicsContext*)graphicsContextWithCGContext:(CGContextRef)context flipped:(BOOL)flipped;
+ (void)saveGraphicsState;
+ (void)restoreGraphicsState;
- (void)saveGraphicsState;
- (void)restoreGraphicsState;
- (void)flushGraphics;
@property(readonly) CGContextRef CGContext;
@end

@interface NSAffineTransform (Drawing)
- (void)set;
- (void)concat;
@end

enum NSLineCapStyle : NSUInteger { NSLineCapStyleButt = 0, NSLineCapStyleRound = 1 };
enum NSLineJoinStyle : NSUInteger { NSLineJoinStyleMiter = 0, NSLineJoinStyleRound = 1 };
static const NSLineCapStyle NSRoundLineCapStyle = NSLineCapStyleRound;
static const NSLineJoinStyle NSRoundLineJoinStyle = NSLineJoinStyleRound;

@interface NSBezierPath : NSObject <NSCopying>
+ (NSBezierPath*)bezierPath;
+ (NSBezierPath*)bezierPathWithRect:(NSRect)rect;
+ (NSBezierPath*)bezierPathWithOvalInRect:(NSRect)rect;
+ (NSBezierPath*)bezierPathWithRoundedRect:(NSRect)rect xRadius:(CGFloat)x yRadius:(CGFloat)y;
- (void)moveToPoint:(NSPoint)point;
- (void)lineToPoint:(NSPoint)point;
- (void)closePath;
- (void)stroke;
- (void)fill;
- (void)addClip;
@property CGFloat lineWidth;
@property NSLineCapStyle lineCapStyle;
@property NSLineJoinStyle lineJoinStyle;
@end
