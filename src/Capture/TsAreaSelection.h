#pragma once

#import "Platform/Cocoa.h"

#include <functional>

#include "Base/Ref.h"
#include "Platform/ScreenRecording.h"

// Covers the main display with its own picture, on which the user drags a rectangle.
@interface TsAreaSelection : NSPanel {
  std::function<void(tessaro::platform::ScreenArea)> _chosen;
}

// `chosen` is called once; after a mere click, or Escape, with an area without a size.
- (instancetype)initWithPicture:(const tessaro::platform::ScreenPicture&)picture
                         chosen:(std::function<void(tessaro::platform::ScreenArea)>)chosen;

@end
