#pragma once

#import <GNUstepGUI/GSTheme.h>

#include "Base/Ref.h"
#include "Platform/Linux/Desktop/DesktopLook.h"

@class NSColorList;

// GNUstep's look, drawn flat and in the desktop's colours. Main thread only.
@interface TsDesktopTheme : GSTheme {
  tessaro::platform::DesktopLook _look;
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
