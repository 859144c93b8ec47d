#import "Shortcuts/TsShortcutValidator.h"

#import "Extensions/NSEvent+TsKeyboard.h"
#include "Platform/Cocoa.h"
#import "Shortcuts/MASShortcut.h"

using tessaro::platform::HotKey;
using tessaro::platform::HotKeyStatus;

namespace {

bool HasShortcut(NSMenuItem* item, MASShortcut* shortcut) {
  NSString* key = [item keyEquivalent];
  if ([key length] == 0 || [item isHidden]) return false;
  // A capital letter implies Shift.
  const bool isCapital = ![key isEqualToString:[key lowercaseString]];
  constexpr NSUInteger kModifiers = kTsCommand | kTsOption | kTsControl | kTsShift;
  const NSUInteger modifiers = ([item keyEquivalentModifierMask] & kModifiers) | (isCapital ? kTsShift : 0);
  return modifiers == [shortcut modifierFlags] && [[key lowercaseString] isEqualToString:[shortcut keyEquivalent]];
}

NSMenuItem* FindItem(NSMenu* menu, MASShortcut* shortcut) {
  for (NSMenuItem* item in [menu itemArray]) {
    NSMenuItem* found = [item hasSubmenu]             ? FindItem([item submenu], shortcut)
                        : HasShortcut(item, shortcut) ? item
                                                      : nil;
    if (found != nil) return found;
  }
  return nil;
}

}  // namespace

HotKey ToHotKey(MASShortcut* shortcut) {
  const auto holds = [flags = [shortcut modifierFlags]](NSUInteger modifier) { return (flags & modifier) != 0; };
  return {
      .virtualKeyCode = [shortcut keyCode],
      .command = holds(kTsCommand),
      .option = holds(kTsOption),
      .control = holds(kTsControl),
      .shift = holds(kTsShift),
  };
}

NSString* WhyInactive(MASShortcut* shortcut, HotKeyStatus status) {
  switch (status) {
    case HotKeyStatus::Active:
      return nil;
    case HotKeyStatus::Taken:
      return [NSString stringWithFormat:@"%@ is already used by another application or by the system.", shortcut];
    case HotKeyStatus::NotOnKeyboard:
      return [NSString stringWithFormat:@"This keyboard has no %@.", shortcut];
    case HotKeyStatus::Unsupported:
      return @"This session doesn’t let applications have shortcuts outside their own windows.";
  }
}

@implementation TsShortcutValidator

+ (instancetype)sharedValidator {
  static TsShortcutValidator* const validator = [[self alloc] init];
  return validator;
}

- (BOOL)isShortcutValid:(MASShortcut*)shortcut {
  if ([[shortcut keyCodeString] length] == 0) return NO;
  if (IsFunctionKey([shortcut keyCode])) return YES;
  const NSUInteger modifiers = [shortcut modifierFlags];
  if (modifiers & (kTsCommand | kTsControl)) return YES;
  return (modifiers & kTsOption) != 0 && !IsTypingKey([shortcut keyCode]);
}

- (BOOL)isShortcutAlreadyTakenBySystem:(MASShortcut*)shortcut explanation:(NSString**)explanation {
  NSMenuItem* item = FindItem([NSApp mainMenu], shortcut);
  NSString* reason =
      item != nil ? [NSString stringWithFormat:@"%@ is the shortcut of the menu item “%@”.", shortcut, [item title]]
                  : WhyInactive(shortcut, tessaro::platform::HotKeyStatusOf(ToHotKey(shortcut)));
  if (reason == nil) return NO;
  if (explanation != nullptr) *explanation = reason;
  return YES;
}

@end
