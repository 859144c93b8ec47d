#include "Platform/Linux/Theme/DesktopTheme.h"

#import <AppKit/AppKit.h>

#include "Base/Ref.h"
#import "Platform/Linux/Theme/TsDesktopTheme.h"

namespace tessaro::platform {

namespace {

void SetFontIn(NSMenu* menu) {
  NSMenuView* view = [menu menuRepresentation];
  [view setFont:[view isHorizontal] ? [NSFont menuBarFontOfSize:0] : [NSFont menuFontOfSize:0]];
  [menu sizeToFit];
  for (NSMenuItem* item in [menu itemArray]) {
    if ([item hasSubmenu]) SetFontIn([item submenu]);
  }
}

// Fonts that a view has got before keep their difference in size.
void SetFontIn(NSView* view, NSFont* before, NSFont* now) {
  NSFont* font = [view respondsToSelector:@selector(font)] ? [static_cast<NSControl*>(view) font] : nil;
  if ([[font familyName] isEqual:[before familyName]]) {
    const CGFloat size = [font pointSize] - [before pointSize] + [now pointSize];
    const bool isBold = ([[NSFontManager sharedFontManager] traitsOfFont:font] & NSBoldFontMask) != 0;
    [static_cast<NSControl*>(view)
        setFont:isBold ? [NSFont boldSystemFontOfSize:size] : [NSFont systemFontOfSize:size]];
  }
  for (NSView* each in [view subviews]) SetFontIn(each, before, now);
}

CGFloat Scale() { return [[NSScreen mainScreen] userSpaceScaleFactor]; }

void Take(TsDesktopTheme* theme, const DesktopLook& look) {
  if ([GSTheme theme] != theme) return;
  NSFont* before = [NSFont systemFontOfSize:0];
  const CGFloat scaleBefore = Scale();
  [theme deactivate];
  [theme setLook:look];
  [theme activate];
  NSFont* now = [NSFont systemFontOfSize:0];
  for (NSWindow* window in Scale() != scaleBefore ? [NSApp windows] : @[]) {
    // GNUstep learns of another scale only with another size.
    if ([window styleMask] & NSTitledWindowMask) [window setContentSize:[[window contentView] bounds].size];
  }
  if ([before isEqual:now]) return;
  SetFontIn([NSApp mainMenu]);
  for (NSWindow* window in [NSApp windows]) SetFontIn([window contentView], before, now);
}

}  // namespace

void FollowDesktopLook() {
  NSString* chosen = [[NSUserDefaults standardUserDefaults] stringForKey:@"GSTheme"];
  if ([chosen length] > 0 && ![chosen isEqual:@"GNUstep"]) return;
  [TsDesktopTheme replaceMethods];
  auto theme = Adopt([[TsDesktopTheme alloc] initWithLook:CurrentLook()]);
  [GSTheme setTheme:theme];
  SetFontIn([NSApp mainMenu]);
  ListenForLookChanges([theme](const DesktopLook& look) { Take(theme, look); });
}

}  // namespace tessaro::platform
