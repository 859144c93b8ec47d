#include "Platform/Drawing.h"

#import <AppKit/AppKit.h>

// A bitmap of its own: an image that is focused has the pixels of the display, twice as many on a Retina display.
namespace tessaro::platform {

Ref<NSBitmapImageRep> DrawPixels(NSSize size, const std::function<void()>& draw) {
  auto pixels = Adopt([[NSBitmapImageRep alloc] initWithBitmapDataPlanes:nullptr
                                                              pixelsWide:static_cast<NSInteger>(size.width)
                                                              pixelsHigh:static_cast<NSInteger>(size.height)
                                                           bitsPerSample:8
                                                         samplesPerPixel:4
                                                                hasAlpha:YES
                                                                isPlanar:NO
                                                          colorSpaceName:NSCalibratedRGBColorSpace
                                                             bytesPerRow:0
                                                            bitsPerPixel:0]);
  [NSGraphicsContext saveGraphicsState];
  [NSGraphicsContext setCurrentContext:[NSGraphicsContext graphicsContextWithBitmapImageRep:pixels]];
  draw();
  [NSGraphicsContext restoreGraphicsState];
  return pixels;
}

}  // namespace tessaro::platform
