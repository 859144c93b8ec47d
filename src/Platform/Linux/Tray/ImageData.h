#pragma once

#import <AppKit/NSImage.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "Platform/Linux/Tray/StatusNotifierItem.h"

namespace tessaro::platform {

// Images as other processes take them. An image is read once only: one that has been handed out must not be changed.
// nullptr for nil and where there is no window server to draw it.
[[nodiscard]] std::shared_ptr<const std::vector<std::uint8_t>> PNGData(NSImage* image);

// The image's pixels, a template image's in colours that can be seen on every background.
[[nodiscard]] StatusNotifierItem::Icon TrayIcon(NSImage* image);

}  // namespace tessaro::platform
