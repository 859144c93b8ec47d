#include "Platform/Linux/Recording/DisplayArea.h"

#import <AppKit/NSScreen.h>

#include <algorithm>

namespace tessaro::platform {

std::optional<PixelArea> PixelsOf(const ScreenArea& area) {
  NSArray* screens = [NSScreen screens];
  if (area.display < 0 || static_cast<NSUInteger>(area.display) >= [screens count]) return std::nullopt;
  CGFloat top = 0;
  for (NSScreen* screen in screens) top = std::max(top, NSMaxY([screen frame]));
  NSScreen* screen = [screens objectAtIndex:static_cast<NSUInteger>(area.display)];
  const NSRect display = [screen frame];
  NSRect part = display;
  if (area.width > 0 && area.height > 0) {
    part = NSIntersectionRect(
        display, NSMakeRect(NSMinX(display) + area.x, NSMaxY(display) - area.y - area.height, area.width, area.height));
  }
  const CGFloat scale = [screen userSpaceScaleFactor];
  return PixelArea{static_cast<int>(NSMinX(part) * scale), static_cast<int>((top - NSMaxY(part)) * scale),
                   static_cast<int>(NSWidth(part) * scale), static_cast<int>(NSHeight(part) * scale)};
}

}  // namespace tessaro::platform
