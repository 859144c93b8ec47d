#import "Shortcuts/TsShortcutValidator.h"

#import "Extensions/NSEvent+TsKeyboard.h"
#include "Platform/Cocoa.h"
#import "Shortcuts/MASShortcut.h"
#include "Shortcuts/ShortcutHotKey.h"
#include "Shortcuts/ShortcutKeys.h"

using tessaro::platform::HotKeyStatusOf;

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
                  : WhyInactive(shortcut, HotKeyStatusOf(ToHotKey(shortcut)));
  if (reason == nil) return NO;
  if (explanation != nullptr) *explanation = reason;
  return YES;
}

@end
