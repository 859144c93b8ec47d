#include "Platform/Linux/Keyboard/ShortcutText.h"

#import <AppKit/AppKit.h>

#include "Platform/Linux/Keyboard/ModifierKeys.h"

namespace tessaro::platform {

namespace {

struct ModifierFlag {
  NSUInteger flag;
  Modifier modifier;
};

constexpr ModifierFlag kModifierFlags[] = {
    {NSControlKeyMask, Modifier::Control},
    {NSCommandKeyMask, Modifier::Command},
    {NSAlternateKeyMask, Modifier::Option},
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
NSString* NameOfModifier(Modifier modifier) {
  const std::vector<std::string> keys = ModifierKeyNames(modifier);
  if (keys.empty()) return nil;
  NSString* symbol = [NSString stringWithUTF8String:keys.front().c_str()];
  if ([symbol hasPrefix:@"Control"]) return @"Ctrl";
  return [[symbol componentsSeparatedByString:@"_"] objectAtIndex:0];
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
  for (const auto& [flag, modifier] : kModifierFlags) {
    NSString* name = mask & flag ? NameOfModifier(modifier) : nil;
    if (name != nil) [parts addObject:name];
  }
  if (IsTypedWithShift(key, mask)) [parts addObject:@"Shift"];
  [parts addObject:NameOfKey(key)];
  return [parts componentsJoinedByString:@"+"];
}

}  // namespace tessaro::platform
