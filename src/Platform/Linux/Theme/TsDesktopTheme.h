#pragma once

#import <GNUstepGUI/GSTheme.h>

#include "Base/Ref.h"
#include "Platform/Linux/Theme/DesktopLook.h"

@class NSColorList;

// GNUstep's look, drawn flat and in the desktop's colours. Main thread only.
@interface TsDesktopTheme : GSTheme {
  Ref<NSColorList> _colors;
  Ref<NSDictionary> _defaults;
}

- (instancetype)initWithLook:(const tessaro::platform::DesktopLook&)look;

// Takes effect with the next activation.
- (void)setLook:(const tessaro::platform::DesktopLook&)look;

@end

@interface TsDesktopTheme (Drawing)

// Exchanges the methods that draw or measure without asking the theme. Under another theme they do what GNUstep's do.
+ (void)replaceMethods;

@end

namespace tessaro::platform {

// Gives this process's windows the desktop's colours, font and scale, and follows their changes, unless the user has
// chosen a theme of GNUstep's. Main thread only, once there is a window server; called once.
void FollowDesktopLook();

}  // namespace tessaro::platform
