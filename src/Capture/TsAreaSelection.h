#pragma once

#import "Platform/Cocoa.h"

#include <functional>

#include "Base/Ref.h"
#include "Platform/ScreenRecording.h"

// Covers the screen with its own picture, on which a person drags a rectangle.
@interface TsAreaSelection : NSPanel {
  std::function<void(tessaro::platform::ScreenArea)> _chosen;
}

// `chosen` is called once; with an area without a size after a mere click, which chooses nothing. nil when there is no
// picture of the screen.
- (instancetype)initWithChosen:(std::function<void(tessaro::platform::ScreenArea)>)chosen;

@end
