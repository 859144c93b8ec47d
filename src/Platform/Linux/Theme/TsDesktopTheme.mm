#import "Platform/Linux/Theme/TsDesktopTheme.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <array>
#include <utility>

#include "Base/TsString.h"
#include "Platform/SystemAppearance.h"

using tessaro::platform::DesktopLook;

namespace {

constexpr NSSize kBezel = {3, 3};
constexpr GSThemeMargins kButtonMargins = {9, 9, 6, 6};
constexpr CGFloat kHeaderMargin = 4;
constexpr CGFloat kSmallestFont = 8;
constexpr CGFloat kLargestFont = 48;

// A colour on a light and on a dark desktop, and its names in GNUstep, without "Color".
struct Shade {
  std::uint32_t light;
  std::uint32_t dark;
  NSString* names;
};

constexpr std::uint32_t kView = 0xffffff;
constexpr std::uint32_t kDarkView = 0x1f1f1f;

const std::array kShades = {
    Shade{0xfafafa, 0x2b2b2b, @"windowBackground"},
    Shade{kView, kDarkView,
          @"controlBackground textBackground rowBackground alternateRowBackground scrollBar header highlight "
          @"controlLightHighlight toolTip"},
    Shade{0x2a2a2a, 0xededed, @"text controlText selectedText selectedControlText label toolTipText"},
    Shade{0x6b6b6b, 0xa6a6a6, @"headerText secondaryLabel selectedKnob windowFrameText"},
    Shade{0xa3a3a3, 0x757575, @"disabledControlText tertiaryLabel quaternaryLabel"},
    Shade{0xd0d0d0, 0x474747, @"grid shadow controlShadow controlDarkShadow windowFrame"},
    Shade{0xe9e9e9, 0x3d3d3d, @"control controlHighlight secondarySelectedControl"},
    Shade{0xb8b8b8, 0x6e6e6e, @"knob"},
};
constexpr CGFloat kSelectionTint = 0.3;
constexpr CGFloat kBrightAccent = 0.7;

NSColor* ColourOf(std::uint32_t rgb) {
  const auto component = [rgb](int shift) { return (rgb >> shift & 0xff) / 255.0; };
  return [NSColor colorWithCalibratedRed:component(16) green:component(8) blue:component(0) alpha:1];
}

void Set(NSColorList* colours, NSString* names, NSColor* colour) {
  for (NSString* name in [names componentsSeparatedByString:@" "]) {
    [colours setColor:colour forKey:[name stringByAppendingString:@"Color"]];
  }
}

Ref<NSColorList> NewColours(const DesktopLook& look) {
  auto colours = Adopt([[NSColorList alloc] initWithName:@"System"]);
  for (const Shade& each : kShades) Set(colours, each.names, ColourOf(look.isDark ? each.dark : each.light));
  NSColor* accent = ColourOf(look.accent);
  NSColor* view = ColourOf(look.isDark ? kDarkView : kView);
  const CGFloat grey = [[accent colorUsingColorSpaceName:NSCalibratedWhiteColorSpace] whiteComponent];
  Set(colours, @"selectedControl alternateSelectedControl selectedMenuItem keyboardFocusIndicator", accent);
  Set(colours, @"alternateSelectedControlText selectedMenuItemText",
      grey < kBrightAccent ? [NSColor whiteColor] : [NSColor blackColor]);
  Set(colours, @"selectedTextBackground", [view blendedColorWithFraction:kSelectionTint ofColor:accent]);
  return colours;
}

// "Noto Sans Medium 10" is a family with or without a style, and a size in points. nil when it is not installed.
NSFont* FontOf(NSString* description) {
  constexpr CGFloat kPixelsPerPoint = 96.0 / 72;
  constexpr int kRegular = 5;
  // Each word is a search, and every program on the display may publish a description.
  constexpr NSUInteger kLongest = 200;
  if ([description length] > kLongest) return nil;
  NSCharacterSet* separators = [NSCharacterSet characterSetWithCharactersInString:@" ,"];
  NSMutableArray* words = [NSMutableArray arrayWithArray:[description componentsSeparatedByString:@" "]];
  const CGFloat size =
      std::clamp<CGFloat>([[words lastObject] floatValue] * kPixelsPerPoint, kSmallestFont, kLargestFont);
  for ([words removeLastObject];[words count] > 0;[words removeLastObject]) {
    NSString* family = [[words componentsJoinedByString:@" "] stringByTrimmingCharactersInSet:separators];
    NSFont* font = [[NSFontManager sharedFontManager] fontWithFamily:family traits:0 weight:kRegular size:size];
    if (font != nil) return font;
  }
  return nil;
}

// None of these overrides a choice of the user's.
Ref<NSDictionary> NewDefaults(const DesktopLook& look) {
  NSMutableDictionary* defaults = [NSMutableDictionary dictionaryWithDictionary:@{
    @"NSScrollViewInterfaceStyle" : @"NSMacintoshInterfaceStyle",
    @"GSScrollViewNoInnerBorder" : @1,
    @"GSScrollerArrowsSameEnd" : @1,
    @"GSScrollerDefaultWidth" : @12,
    @"GSMenuBarHeight" : @26,
    @"GSMenuItemHeight" : @24,
    @"GSMenuSeparatorHeight" : @9,
  }];
  if (look.scale > 0) [defaults setObject:@(look.scale) forKey:@"GSScaleFactor"];
  // Neither glyphs nor their advances fit the pixels of scale 1.
  if (look.scale > 1) [defaults setObject:@0x11 forKey:@"GSFontHinting"];
  if (NSFont* font = FontOf(TsNSString(look.font))) {
    NSFont* bold = [[NSFontManager sharedFontManager] convertFont:font toHaveTrait:NSBoldFontMask];
    [defaults setObject:[font fontName] forKey:@"NSFont"];
    [defaults setObject:[bold fontName] forKey:@"NSBoldFont"];
    [defaults setObject:@([font pointSize]) forKey:@"NSFontSize"];
  }
  return Retain<NSDictionary>(@{@"GSThemeDomain" : defaults});
}

}  // namespace

@implementation TsDesktopTheme

- (instancetype)initWithLook:(const DesktopLook&)look {
  self = [super initWithBundle:nil];
  if (!self) return nil;
  // Under any other name GNUstep would return to its own theme with the next change of the user's defaults.
  [self setName:@"GNUstep"];
  [self setLook:look];
  return self;
}

- (void)setLook:(const DesktopLook&)look {
  _colors = NewColours(look);
  _defaults = NewDefaults(look);
}

- (NSColorList*)colors {
  return _colors;
}

- (NSDictionary*)infoDictionary {
  return _defaults;
}

- (NSColor*)colorNamed:(NSString*)name state:(GSThemeControlState)state {
  if ([name isEqual:@"highlightedTableRowBackgroundColor"]) return [NSColor selectedControlColor];
  if ([name isEqual:@"highlightedTableRowTextColor"]) return [NSColor alternateSelectedControlTextColor];
  if ([name isEqual:@"menuItemBackgroundColor"]) return [NSColor windowBackgroundColor];
  return [@[ @"menuSeparatorColor", @"menuBorderColor", @"toolbarBorderColor" ] containsObject:name]
             ? [NSColor gridColor]
             : nil;
}

- (NSSize)sizeForBorderType:(NSBorderType)type {
  return type == NSBezelBorder || type == NSGrooveBorder ? kBezel : [super sizeForBorderType:type];
}

- (GSThemeMargins)buttonMarginsForCell:(NSCell*)cell style:(int)style state:(GSThemeControlState)state {
  return kButtonMargins;
}

- (NSRect)tableHeaderCellDrawingRectForBounds:(NSRect)bounds {
  return NSInsetRect(bounds, kHeaderMargin, 1);
}

@end

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

void Announce() {
  for (NSWindow* window in [NSApp windows]) [[[window contentView] superview] setNeedsDisplay:YES];
  @try {
    [[NSDistributedNotificationCenter defaultCenter] postNotificationName:@"AppleInterfaceThemeChangedNotification"
                                                                   object:nil
                                                                 userInfo:nil
                                                       deliverImmediately:YES];
  } @catch (NSException*) {
    // Without the notification server there are no observers either.
  }
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

void AnnounceAppearanceChanges() {
  static bool isListening = false;
  if (std::exchange(isListening, true)) return;
  ListenForLookChanges([wasDark = CurrentLook().isDark](const DesktopLook& look) mutable {
    if (std::exchange(wasDark, look.isDark) != look.isDark) Announce();
  });
}

}  // namespace tessaro::platform
