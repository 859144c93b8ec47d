#pragma once

#include <AppKit/NSImage.h>

enum NSBitmapImageFileType : NSUInteger {
  NSBitmapImageFileTypeTIFF = 0,
  NSBitmapImageFileTypeJPEG = 3,
  NSBitmapImageFileTypePNG = 4,
};
static const NSBitmapImageFileType NSPNGFileType API_DEPRECATED("", macos(10.0, 10.12)) = NSBitmapImageFileTypePNG;
static const NSBitmapImageFileType NSJPEGFileType API_DEPRECATED("", macos(10.0, 10.12)) = NSBitmapImageFileTypeJPEG;

enum NSTIFFCompression : NSUInteger { NSTIFFCompressionNone = 1 };

@interface NSBitmapImageRep : NSImageRep
+ (instancetype)imageRepWithData:(NSData*)data;
+ (NSArray*)imageRepsWithData:(NSData*)data;
- (instancetype)initWithData:(NSData*)data;
- (instancetype)initWithCGImage:(CGImageRef)image;
- (instancetype)initWithFocusedViewRect:(NSRect)rect API_DEPRECATED("", macos(10.0, 10.14));
- (instancetype)initWithBitmapDataPlanes:(unsigned char**)planes
                              pixelsWide:(NSInteger)width
                              pixelsHigh:(NSInteger)height
                           bitsPerSample:(NSInteger)bitsPerSample
                         samplesPerPixel:(NSInteger)samplesPerPixel
                                hasAlpha:(BOOL)alpha
                                isPlanar:(BOOL)isPlanar
                          colorSpaceName:(NSColorSpaceName)name
                             bytesPerRow:(NSInteger)bytesPerRow
                            bitsPerPixel:(NSInteger)bitsPerPixel;
@property(readonly) unsigned char* bitmapData NS_RETURNS_INNER_POINTER;
@property(readonly, getter=isPlanar) BOOL planar;
@property(readonly) NSInteger samplesPerPixel;
@property(readonly) NSInteger bitsPerPixel;
@property(readonly) NSInteger bytesPerRow;
- (NSData*)representationUsingType:(NSBitmapImageFileType)type properties:(NSDictionary*)properties;
- (NSData*)TIFFRepresentationUsingCompression:(NSTIFFCompression)compression factor:(float)factor;
- (NSColor*)colorAtX:(NSInteger)x y:(NSInteger)y;
@end
