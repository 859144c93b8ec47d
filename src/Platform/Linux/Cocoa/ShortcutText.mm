#include "Platform/Linux/Cocoa/ShortcutText.h"

#import <AppKit/AppKit.h>

namespace tessaro::platform {

namespace {

// GNUstep's default for the key, and the key where there is no such default.
struct ModifierKey {
  NSUInteger flag;
  NSString* defaultsKey;
  NSString* usual;
};

const ModifierKey kModifierKeys[] = {
    {NSControlKeyMask, @"GSFirstControlKey", @"Control_L"},
    {NSCommandKeyMask, @"GSFirstCommandKey", @"Alt_L"},
    {NSAlternateKeyMask, @"GSFirstAlternateKey", @"Alt_R"},
};

struct NamedCharacter {
  unichar character;
  NSString* name;
};

const NamedCharacter kNamedCharacters[] = {
    {NSUpArrowFunctionKey, @"↑"},
    {NSDownArrowFunctionKey, @"↓"},
    {NSLeftArrowFunctionKey, @"←"},
    {NSRightArrowFunctionKey, @"→"},
    {NSHomeFunctionKey, @"Home"},
    {NSEndFunctionKey, @"End"},
    {NSPageUpFunctionKey, @"Page Up"},
    {NSDeleteFunctionKey, @"Del"},
    {NSInsertFunctionKey, @"Ins"},
    {NSPageDownFunctionKey, @"Page Down"},
    {'\r', @"Enter"},
    {'\t', @"Tab"},
    {0x1b, @"Esc"},
    {NSDeleteCharacter, @"Backspace"},
    {' ', @"Space"},
};

// "Control_L" is "Ctrl", "Super_L" is "Super".
NSString* NameOfModifierKey(NSString* symbol) {
  if ([symbol hasPrefix:@"Control"]) return @"Ctrl";
  return [[symbol componentsSeparatedByString:@"_"] objectAtIndex:0];
}

NSString* NameOfModifier(const ModifierKey& modifier) {
  NSString* symbol = [[NSUserDefaults standardUserDefaults] stringForKey:modifier.defaultsKey];
  return NameOfModifierKey(symbol != nil ? symbol : modifier.usual);
}

NSString* NameOfKey(NSString* key) {
  const unichar first = [key characterAtIndex:0];
  for (const auto& [character, name] : kNamedCharacters) {
    if (character == first) return name;
  }
  if (first >= NSF1FunctionKey && first <= NSF35FunctionKey) {
    return [NSString stringWithFormat:@"F%d", first - NSF1FunctionKey + 1];
  }
  return [key uppercaseString];
}

bool IsTypedWithShift(NSString* key, NSUInteger mask) {
  return (mask & NSShiftKeyMask) != 0 || ![key isEqualToString:[key lowercaseString]];
}

}  // namespace

NSString* ShortcutText(NSMenuItem* item) {
  NSString* key = [item keyEquivalent];
  const NSUInteger mask = [item keyEquivalentModifierMask];
  if ([key length] == 0) return @"";
  NSMutableArray* parts = [NSMutableArray array];
  for (const auto& modifier : kModifierKeys) {
    if (mask & modifier.flag) [parts addObject:NameOfModifier(modifier)];
  }
  if (IsTypedWithShift(key, mask)) [parts addObject:@"Shift"];
  [parts addObject:NameOfKey(key)];
  return [parts componentsJoinedByString:@"+"];
}

}  // namespace tessaro::platform
