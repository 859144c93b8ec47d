#pragma once

#import <AppKit/NSBitmapImageRep.h>

#include <functional>

#include "Base/Ref.h"

namespace tessaro::platform {

// The pixels that `draw` draws on a clear ground, eight bits a sample: one for each point of `size`, whatever display
// is attached. Main thread only, with a window server.
[[nodiscard]] Ref<NSBitmapImageRep> DrawPixels(NSSize size, const std::function<void()>& draw);

}  // namespace tessaro::platform
