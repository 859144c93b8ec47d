#pragma once

#import <AppKit/NSImage.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "Platform/Linux/Tray/StatusNotifierItem.h"

namespace tessaro::platform {

// Images in the formats of other processes. The result for an image is kept, so the image must not change afterwards.
// nullptr for nil and without a window server to draw it.
[[nodiscard]] std::shared_ptr<const std::vector<std::uint8_t>> PNGData(NSImage* image);

// The image's pixels, a template image's in colours that are visible on every background.
[[nodiscard]] StatusNotifierItem::Icon TrayIcon(NSImage* image);

}  // namespace tessaro::platform
