#pragma once

#include <CoreGraphics/CoreGraphics.h>

typedef struct CGImageSource* CGImageSourceRef;
typedef struct CGImageDestination* CGImageDestinationRef;

extern "C" {
extern const CFStringRef kCGImageSourceThumbnailMaxPixelSize;
extern const CFStringRef kCGImageSourceCreateThumbnailFromImageAlways;
extern const CFStringRef kCGImageSourceCreateThumbnailWithTransform;
extern const CFStringRef kCGImageDestinationLossyCompressionQuality;
extern const CFStringRef kCGImagePropertyPixelWidth;
extern const CFStringRef kCGImagePropertyPixelHeight;
extern const CFStringRef kCGImagePropertyOrientation;
extern const CFStringRef kCGImagePropertyGIFDictionary;

CGImageSourceRef CGImageSourceCreateWithURL(CFURLRef url, CFDictionaryRef options);
CFStringRef CGImageSourceGetType(CGImageSourceRef source);
size_t CGImageSourceGetCount(CGImageSourceRef source);
CFDictionaryRef CGImageSourceCopyProperties(CGImageSourceRef source, CFDictionaryRef options);
CFDictionaryRef CGImageSourceCopyPropertiesAtIndex(CGImageSourceRef source, size_t index, CFDictionaryRef options);
CGImageRef CGImageSourceCreateThumbnailAtIndex(CGImageSourceRef source, size_t index, CFDictionaryRef options);

CGImageDestinationRef CGImageDestinationCreateWithData(CFMutableDataRef data, CFStringRef type, size_t count,
                                                       CFDictionaryRef options);
void CGImageDestinationSetProperties(CGImageDestinationRef destination, CFDictionaryRef properties);
void CGImageDestinationAddImage(CGImageDestinationRef destination, CGImageRef image, CFDictionaryRef properties);
bool CGImageDestinationFinalize(CGImageDestinationRef destination);
}
