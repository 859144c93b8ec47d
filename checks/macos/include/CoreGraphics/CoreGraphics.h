#pragma once

#include <CoreFoundation/CoreFoundation.h>

struct CGPoint {
  CGFloat x;
  CGFloat y;
};
struct CGSize {
  CGFloat width;
  CGFloat height;
};
struct CGRect {
  CGPoint origin;
  CGSize size;
};

typedef struct CGImage* CGImageRef;
typedef struct CGContext* CGContextRef;
typedef struct CGColorSpace* CGColorSpaceRef;
typedef struct CGDataProvider* CGDataProviderRef;
typedef struct CGPDFDocument* CGPDFDocumentRef;
typedef struct CGPDFPage* CGPDFPageRef;

using CGDirectDisplayID = uint32_t;
using CGBitmapInfo = uint32_t;

enum CGImageAlphaInfo : uint32_t { kCGImageAlphaPremultipliedLast = 1, kCGImageAlphaNoneSkipLast = 5 };
enum : CGBitmapInfo { kCGBitmapByteOrder32Big = 4 << 12 };
enum : int32_t { kCGErrorSuccess = 0 };
enum CGInterpolationQuality : int32_t { kCGInterpolationHigh = 3 };
enum CGPDFBox : int32_t { kCGPDFMediaBox = 0, kCGPDFCropBox = 1 };
struct CGAffineTransform {
  CGFloat a, b, c, d, tx, ty;
};

extern "C" {
extern const CGRect CGRectNull;
extern const CFStringRef kCGColorSpaceSRGB;

CFDictionaryRef CGSessionCopyCurrentDictionary(void);
bool CGPreflightScreenCaptureAccess(void) API_AVAILABLE(macos(11.0));
bool CGRequestScreenCaptureAccess(void) API_AVAILABLE(macos(11.0));

CGDirectDisplayID CGMainDisplayID(void);
int32_t CGGetActiveDisplayList(uint32_t most, CGDirectDisplayID* displays, uint32_t* count);
CGRect CGDisplayBounds(CGDirectDisplayID display);
CGImageRef CGDisplayCreateImage(CGDirectDisplayID display) API_DEPRECATED("", macos(10.6, 14.4));

size_t CGImageGetWidth(CGImageRef image);
size_t CGImageGetHeight(CGImageRef image);
CGImageAlphaInfo CGImageGetAlphaInfo(CGImageRef image);
void CGImageRelease(CGImageRef image);

CGColorSpaceRef CGColorSpaceCreateWithName(CFStringRef name);
CGColorSpaceRef CGColorSpaceCreateDeviceRGB(void);
void CGColorSpaceRelease(CGColorSpaceRef space);

CGContextRef CGBitmapContextCreate(void* data, size_t width, size_t height, size_t bitsPerComponent, size_t bytesPerRow,
                                   CGColorSpaceRef space, uint32_t bitmapInfo);
CGImageRef CGBitmapContextCreateImage(CGContextRef context);
void CGContextRelease(CGContextRef context);
void CGContextDrawImage(CGContextRef context, CGRect rect, CGImageRef image);
void CGContextSetInterpolationQuality(CGContextRef context, CGInterpolationQuality quality);
void CGContextSetRGBFillColor(CGContextRef context, CGFloat red, CGFloat green, CGFloat blue, CGFloat alpha);
void CGContextFillRect(CGContextRef context, CGRect rect);
void CGContextConcatCTM(CGContextRef context, CGAffineTransform transform);
void CGContextScaleCTM(CGContextRef context, CGFloat x, CGFloat y);
void CGContextTranslateCTM(CGContextRef context, CGFloat x, CGFloat y);

CGPDFDocumentRef CGPDFDocumentCreateWithURL(CFURLRef url);
bool CGPDFDocumentAllowsPrinting(CGPDFDocumentRef document);
bool CGPDFDocumentIsUnlocked(CGPDFDocumentRef document);
size_t CGPDFDocumentGetNumberOfPages(CGPDFDocumentRef document);
CGPDFPageRef CGPDFDocumentGetPage(CGPDFDocumentRef document, size_t pageNumber);
void CGPDFDocumentRelease(CGPDFDocumentRef document);
CGRect CGPDFPageGetBoxRect(CGPDFPageRef page, CGPDFBox box);
int CGPDFPageGetRotationAngle(CGPDFPageRef page);
CGAffineTransform CGPDFPageGetDrawingTransform(CGPDFPageRef page, CGPDFBox box, CGRect rect, int rotate,
                                               bool preservesAspectRatio);
void CGContextDrawPDFPage(CGContextRef context, CGPDFPageRef page);
}

inline CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height) { return {{x, y}, {width, height}}; }
