#pragma once

#include <AppKit/NSGraphics.h>

@interface NSImageRep : NSObject <NSCopying>
@property NSSize size;
@property(getter=hasAlpha) BOOL alpha;
@property(copy) NSColorSpaceName colorSpaceName;
@property NSInteger bitsPerSample;
@property NSInteger pixelsWide;
@property NSInteger pixelsHigh;
@end

using NSImageName = NSString*;
@interface NSImage : NSObject <NSCopying, NSSecureCoding>
+ (NSImage*)imageNamed:(NSImageName)name;
+ (BOOL)canInitWithPasteboard:(NSPasteboard*)pasteboard;
@property(class, readonly, copy) NSArray* imageTypes;
+ (NSArray*)imageUnfilteredFileTypes API_DEPRECATED("", macos(10.0, 10.10));
+ (NSArray*)imageUnfilteredPasteboardTypes API_DEPRECATED("", macos(10.0, 10.10));
- (instancetype)initWithSize:(NSSize)size;
- (instancetype)initWithData:(NSData*)data;
- (instancetype)initWithContentsOfFile:(NSString*)path;
- (instancetype)initWithPasteboard:(NSPasteboard*)pasteboard;
- (instancetype)initWithCGImage:(CGImageRef)image size:(NSSize)size;
@property NSSize size;
- (BOOL)isTemplate;
- (void)setTemplate:(BOOL)isTemplate;
@property(readonly, getter=isValid) BOOL valid;
- (BOOL)setName:(NSImageName)name;
- (NSImageName)name;
@property(readonly, copy) NSData* TIFFRepresentation;
@property(readonly, copy) NSArray* representations;
- (void)addRepresentation:(NSImageRep*)rep;
- (void)lockFocus API_DEPRECATED("", macos(10.0, 14.0));
- (void)unlockFocus API_DEPRECATED("", macos(10.0, 14.0));
- (CGImageRef)CGImageForProposedRect:(NSRect*)rect context:(NSGraphicsContext*)context hints:(NSDictionary*)hints;
- (void)drawAtPoint:(NSPoint)point
           fromRect:(NSRect)source
          operation:(NSCompositingOperation)operation
           fraction:(CGFloat)fraction;
- (void)drawInRect:(NSRect)rect
          fromRect:(NSRect)source
         operation:(NSCompositingOperation)operation
          fraction:(CGFloat)fraction;
- (void)drawInRect:(NSRect)rect;
@end
