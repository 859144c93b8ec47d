#include "Platform/Linux/Tray/ImageData.h"

#import <AppKit/AppKit.h>

#include <algorithm>

#include "Base/Ref.h"
#include "Platform/Linux/AppKit/NSImage+Template.h"
#include "Platform/Linux/AppKit/SideTable.h"

namespace tessaro::platform {

namespace {

using PNG = std::shared_ptr<const std::vector<std::uint8_t>>;
using KnownPNGs = SideTable<NSImage, PNG>;

Ref<NSBitmapImageRep> Rasterize(NSImage* image) {
  const NSSize size = [image size];
  auto canvas = Adopt([[NSImage alloc] initWithSize:size]);
  [canvas lockFocus];
  [image drawAtPoint:NSZeroPoint fromRect:NSZeroRect operation:NSCompositeSourceOver fraction:1];
  auto pixels = Adopt([[NSBitmapImageRep alloc] initWithFocusedViewRect:NSMakeRect(0, 0, size.width, size.height)]);
  [canvas unlockFocus];
  return pixels;
}

std::uint8_t Byte(CGFloat component) { return static_cast<std::uint8_t>(component * 255 + 0.5); }

void AppendPixel(NSColor* color, std::vector<std::uint8_t>& argb) {
  const CGFloat alpha = [color alphaComponent];
  // Clear pixels have colour components that are not numbers.
  if (alpha <= 0) {
    argb.insert(argb.end(), 4, 0);
    return;
  }
  argb.insert(argb.end(),
              {Byte(alpha), Byte([color redComponent]), Byte([color greenComponent]), Byte([color blueComponent])});
}

// Trays don't say whether they are dark or light: draw the shape dark, with a light rim.
class TemplateShape {
 public:
  explicit TemplateShape(const StatusNotifierItem::Icon& icon) : icon_(icon) {}

  [[nodiscard]] std::vector<std::uint8_t> Drawn() const {
    std::vector<std::uint8_t> argb;
    argb.reserve(icon_.argb.size());
    for (std::int32_t y = 0; y < icon_.height; ++y) {
      for (std::int32_t x = 0; x < icon_.width; ++x) AppendPixel(Alpha(x, y), kRimAlpha * AlphaAround(x, y), argb);
    }
    return argb;
  }

 private:
  static constexpr double kDark = 0.15;
  static constexpr double kLight = 1;
  static constexpr double kRimAlpha = 0.8;

  static void AppendPixel(double shape, double rim, std::vector<std::uint8_t>& argb) {
    const double alpha = shape + rim * (1 - shape);
    const double brightness = alpha > 0 ? (kDark * shape + kLight * rim * (1 - shape)) / alpha : 0;
    argb.push_back(Byte(alpha));
    argb.insert(argb.end(), 3, Byte(brightness));
  }

  [[nodiscard]] double Alpha(std::int32_t x, std::int32_t y) const {
    if (x < 0 || y < 0 || x >= icon_.width || y >= icon_.height) return 0;
    return icon_.argb[(static_cast<std::size_t>(y) * icon_.width + x) * 4] / 255.0;
  }

  [[nodiscard]] double AlphaAround(std::int32_t x, std::int32_t y) const {
    double most = 0;
    for (const std::int32_t dy : {-1, 0, 1}) {
      for (const std::int32_t dx : {-1, 0, 1}) most = std::max(most, Alpha(x + dx, y + dy));
    }
    return most;
  }

  const StatusNotifierItem::Icon& icon_;
};

}  // namespace

PNG PNGData(NSImage* image) {
  if (image == nil) return nullptr;
  if (PNG known = KnownPNGs::Shared().Get(image, nullptr)) return known;
  NSData* data = [Rasterize(image) representationUsingType:NSPNGFileType properties:@{}];
  if (data == nil) return nullptr;
  const auto* bytes = static_cast<const std::uint8_t*>([data bytes]);
  auto png = std::make_shared<const std::vector<std::uint8_t>>(bytes, bytes + [data length]);
  KnownPNGs::Shared().Set(image, png);
  return png;
}

StatusNotifierItem::Icon TrayIcon(NSImage* image) {
  if (image == nil) return {};
  const auto pixels = Rasterize(image);
  StatusNotifierItem::Icon icon{.width = static_cast<std::int32_t>([pixels pixelsWide]),
                                .height = static_cast<std::int32_t>([pixels pixelsHigh])};
  icon.argb.reserve(static_cast<std::size_t>(icon.width) * icon.height * 4);
  for (std::int32_t y = 0; y < icon.height; ++y) {
    for (std::int32_t x = 0; x < icon.width; ++x) AppendPixel([pixels colorAtX:x y:y], icon.argb);
  }
  if ([image isTemplate]) icon.argb = TemplateShape(icon).Drawn();
  return icon;
}

}  // namespace tessaro::platform
