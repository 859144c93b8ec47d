#pragma once

#include <AppKit/AppKitDefines.h>

@interface NSColor : NSObject <NSCopying, NSSecureCoding>
+ (NSColor*)colorWithCalibratedRed:(CGFloat)red green:(CGFloat)green blue:(CGFloat)blue alpha:(CGFloat)alpha;
+ (NSColor*)colorWithCalibratedWhite:(CGFloat)white alpha:(CGFloat)alpha;
+ (NSColor*)colorWithSRGBRed:(CGFloat)red green:(CGFloat)green blue:(CGFloat)blue alpha:(CGFloat)alpha;
@property(class, readonly, strong) NSColor* blackColor;
@property(class, readonly, strong) NSColor* whiteColor;
@property(class, readonly, strong) NSColor* redColor;
@property(class, readonly, strong) NSColor* lightGrayColor;
@property(class, readonly, strong) NSColor* darkGrayColor;
@property(class, readonly, strong) NSColor* clearColor;
@property(class, readonly, strong) NSColor* systemBlueColor;
@property(class, readonly, strong) NSColor* controlTextColor;
@property(class, readonly, strong) NSColor* windowBackgroundColor;
- (void)set;
- (void)setFill;
- (void)setStroke;
- (NSColor*)colorWithAlphaComponent:(CGFloat)alpha;
@end

@interface NSGradient : NSObject <NSCopying>
- (instancetype)initWithStartingColor:(NSColor*)starting endingColor:(NSColor*)ending;
- (void)drawInRect:(NSRect)rect angle:(CGFloat)angle;
@end
