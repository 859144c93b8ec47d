#pragma once

#include <Foundation/NSValue.h>

using NSPoint = CGPoint;
using NSSize = CGSize;
using NSRect = CGRect;
enum NSRectEdge : NSUInteger { NSMinXEdge = 0, NSMinYEdge = 1, NSMaxXEdge = 2, NSMaxYEdge = 3 };

FOUNDATION_EXPORT const NSPoint NSZeroPoint;
FOUNDATION_EXPORT const NSSize NSZeroSize;
FOUNDATION_EXPORT const NSRect NSZeroRect;

inline NSPoint NSMakePoint(CGFloat x, CGFloat y) { return {x, y}; }
inline NSSize NSMakeSize(CGFloat width, CGFloat height) { return {width, height}; }
inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat width, CGFloat height) { return {{x, y}, {width, height}}; }
inline CGFloat NSMaxX(NSRect rect) { return rect.origin.x + rect.size.width; }
inline CGFloat NSMaxY(NSRect rect) { return rect.origin.y + rect.size.height; }
inline CGFloat NSMidX(NSRect rect) { return rect.origin.x + rect.size.width / 2; }
inline CGFloat NSMidY(NSRect rect) { return rect.origin.y + rect.size.height / 2; }
inline CGFloat NSMinX(NSRect rect) { return rect.origin.x; }
inline CGFloat NSMinY(NSRect rect) { return rect.origin.y; }
inline CGFloat NSWidth(NSRect rect) { return rect.size.width; }
inline CGFloat NSHeight(NSRect rect) { return rect.size.height; }

FOUNDATION_EXPORT BOOL NSEqualPoints(NSPoint left, NSPoint right);
FOUNDATION_EXPORT BOOL NSEqualSizes(NSSize left, NSSize right);
FOUNDATION_EXPORT BOOL NSEqualRects(NSRect left, NSRect right);
FOUNDATION_EXPORT BOOL NSIsEmptyRect(NSRect rect);
FOUNDATION_EXPORT BOOL NSPointInRect(NSPoint point, NSRect rect);
FOUNDATION_EXPORT BOOL NSMouseInRect(NSPoint point, NSRect rect, BOOL flipped);
FOUNDATION_EXPORT NSRect NSInsetRect(NSRect rect, CGFloat x, CGFloat y);
FOUNDATION_EXPORT NSRect NSOffsetRect(NSRect rect, CGFloat x, CGFloat y);
FOUNDATION_EXPORT NSRect NSIntegralRect(NSRect rect);
FOUNDATION_EXPORT NSRect NSIntersectionRect(NSRect left, NSRect right);
FOUNDATION_EXPORT BOOL NSIntersectsRect(NSRect left, NSRect right);
FOUNDATION_EXPORT NSRect NSUnionRect(NSRect left, NSRect right);
FOUNDATION_EXPORT BOOL NSContainsRect(NSRect outer, NSRect inner);
FOUNDATION_EXPORT void NSDivideRect(NSRect rect, NSRect* slice, NSRect* rest, CGFloat amount, NSRectEdge edge);
FOUNDATION_EXPORT NSString* NSStringFromPoint(NSPoint point);
FOUNDATION_EXPORT NSString* NSStringFromSize(NSSize size);
FOUNDATION_EXPORT NSString* NSStringFromRect(NSRect rect);

@interface NSValue (Geometry)
+ (NSValue*)valueWithPoint:(NSPoint)point;
+ (NSValue*)valueWithSize:(NSSize)size;
+ (NSValue*)valueWithRect:(NSRect)rect;
@property(readonly) NSPoint pointValue;
@property(readonly) NSSize sizeValue;
@property(readonly) NSRect rectValue;
@end

@interface NSAffineTransform : NSObject <NSCopying>
+ (NSAffineTransform*)transform;
- (void)translateXBy:(CGFloat)x yBy:(CGFloat)y;
- (void)scaleBy:(CGFloat)scale;
- (void)scaleXBy:(CGFloat)x yBy:(CGFloat)y;
- (NSPoint)transformPoint:(NSPoint)point;
- (void)invert;
@end
