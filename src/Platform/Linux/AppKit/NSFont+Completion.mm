#import <AppKit/AppKit.h>

#include <string>

#include "Base/TsReplaceMethod.h"
#include "Platform/Linux/AppKit/Completion.h"
#include "Platform/Linux/AppKit/ReplacedMethod.h"

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

ReplacedMethod<void (*)(id, SEL, const NSGlyph*, const NSSize*, size_t)> showGlyphs;

bool IsPair(const NSGlyph* glyphs, size_t count) { return count > 1 && (glyphs[0] & 0xfc00) == 0xd800; }

// GNUstep lays text out with advances in whole points. Scaled text it draws with others, so runs would overlap or gape.
void ShowGlyphs(id state, SEL selector, const NSGlyph* glyphs, const NSSize* advances, size_t count) {
  if ([[state GSCurrentCTM] transformStruct].m11 == 1) return showGlyphs(state, selector, glyphs, advances, count);
  CGFloat x = 0;
  CGFloat y = 0;
  [state DPScurrentpoint:&x:&y];
  while (count > 0) {
    const size_t length = IsPair(glyphs, count) ? 2 : 1;
    showGlyphs(state, selector, glyphs, advances, length);
    x += advances[0].width + (length == 2 ? advances[1].width : 0);
    [state DPSmoveto:x:y];
    glyphs += length;
    advances += length;
    count -= length;
  }
}

}  // namespace

void CompleteFonts() {
  showGlyphs.With(NSClassFromString(@"CairoGState"), "GSShowGlyphsWithAdvances:::", ShowGlyphs);
  for (NSString* name in [SizeKeys() allKeys]) {
    const SEL selector = NSSelectorFromString(name);
    TsReplaceMethod(object_getClass([NSFont class]), selector, AliasOf(selector), reinterpret_cast<IMP>(FontOfSize));
  }
}

}  // namespace tessaro::platform
