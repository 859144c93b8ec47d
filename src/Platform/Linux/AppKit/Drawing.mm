#include "Platform/Drawing.h"

#import <AppKit/AppKit.h>

// GNUstep draws into windows only: read the pixels back from a focused image.
namespace tessaro::platform {

Ref<NSBitmapImageRep> DrawPixels(NSSize size, const std::function<void()>& draw) {
  const auto canvas = Adopt([[NSImage alloc] initWithSize:size]);
  [canvas lockFocus];
  draw();
  auto pixels = Adopt([[NSBitmapImageRep alloc] initWithFocusedViewRect:NSMakeRect(0, 0, size.width, size.height)]);
  [canvas unlockFocus];
  return pixels;
}

}  // namespace tessaro::platform
