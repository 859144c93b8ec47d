#import <AppKit/AppKit.h>

#include <string>

#include "Base/TsReplaceMethod.h"
#include "Platform/Linux/AppKit/Completion.h"

// GNUstep keeps the standard fonts of the default size for good, whatever the user's defaults say later. Fonts of a
// given size it makes from the defaults.

namespace tessaro::platform {

namespace {

NSDictionary* SizeKeys() {
  return @{
    @"boldSystemFontOfSize:" : @"NSBoldFontSize",
    @"controlContentFontOfSize:" : @"NSControlContentFontSize",
    @"labelFontOfSize:" : @"NSLabelFontSize",
    @"menuBarFontOfSize:" : @"NSMenuBarFontSize",
    @"menuFontOfSize:" : @"NSMenuFontSize",
    @"messageFontOfSize:" : @"NSMessageFontSize",
    @"paletteFontOfSize:" : @"NSPaletteFontSize",
    @"systemFontOfSize:" : @"NSFontSize",
    @"titleBarFontOfSize:" : @"NSTitleBarFontSize",
    @"toolTipsFontOfSize:" : @"NSToolTipsFontSize",
    @"userFontOfSize:" : @"NSUserFontSize",
  };
}

SEL AliasOf(SEL selector) { return sel_registerName((std::string("ts_gnustep_") + sel_getName(selector)).c_str()); }

NSFont* FontOfSize(Class fonts, SEL selector, CGFloat size) {
  NSString* key = [SizeKeys() objectForKey:NSStringFromSelector(selector)];
  if (size <= 0) size = [[NSUserDefaults standardUserDefaults] floatForKey:key];
  const auto previous =
      reinterpret_cast<decltype(&FontOfSize)>(class_getMethodImplementation(object_getClass(fonts), AliasOf(selector)));
  return previous(fonts, selector, size > 0 ? size : [NSFont systemFontSize]);
}

}  // namespace

void CompleteFonts() {
  for (NSString* name in [SizeKeys() allKeys]) {
    const SEL selector = NSSelectorFromString(name);
    TsReplaceMethod(object_getClass([NSFont class]), selector, AliasOf(selector), reinterpret_cast<IMP>(FontOfSize));
  }
}

}  // namespace tessaro::platform
