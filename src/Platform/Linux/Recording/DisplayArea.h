#pragma once

#include <optional>

#include "Platform/ScreenRecording.h"

namespace tessaro::platform {

// A part of the X screen, in pixels from its upper left corner.
struct PixelArea {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

// Nothing for an unknown display. An area beyond its display is cut. Main thread only.
[[nodiscard]] std::optional<PixelArea> PixelsOf(const ScreenArea& area);

}  // namespace tessaro::platform
