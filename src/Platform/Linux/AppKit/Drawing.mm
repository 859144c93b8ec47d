#include "Platform/Drawing.h"

#import <AppKit/AppKit.h>

// GNUstep draws into windows only: what a focused image has been given is read back.
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
