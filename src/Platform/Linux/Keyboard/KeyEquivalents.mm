#include "Platform/Linux/Keyboard/KeyEquivalents.h"

#import <AppKit/AppKit.h>

#include "Platform/Linux/Keyboard/KeyCharacters.h"
#include "Platform/Linux/Keyboard/ModifierKeys.h"

namespace tessaro::platform {

namespace {

// ---- Key presses

constexpr NSUInteger kOtherModifiers = NSCommandKeyMask | NSAlternateKeyMask | NSControlKeyMask;

bool IsLetter(NSString* text) { return ![[text lowercaseString] isEqualToString:[text uppercaseString]]; }

bool IsUpperCase(NSString* text) { return IsLetter(text) && [text isEqualToString:[text uppercaseString]]; }

// Arrows, Return, function keys: Shift does not change what they type.
bool IsControl(NSString* text) {
  const unichar first = [text length] > 0 ? [text characterAtIndex:0] : 0;
  return first < 0x20 || first == 0x7f || (first >= 0xf700 && first <= 0xf8ff);
}

NSString* StringOf(char16_t character) {
  if (character == 0) return nil;
  const unichar unit = character;
  return [NSString stringWithCharacters:&unit length:1];
}

// ---- Texts

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

KeyPress::KeyPress(NSEvent* event)
    : characters_([event charactersIgnoringModifiers]), modifiers_([event modifierFlags]) {
  const bool isShifted = (modifiers_ & NSShiftKeyMask) != 0;
  if ([characters_ length] > 0 && IsOfOtherScript([characters_ characterAtIndex:0])) {
    if (NSString* latin = StringOf(AsciiCharacter([event keyCode], isShifted))) characters_ = latin;
  }
  if (isShifted && !IsLetter(characters_) && !IsControl(characters_)) {
    unshifted_ = StringOf(UnshiftedCharacter([event keyCode]));
  }
}

bool KeyPress::Chooses(NSMenuItem* item) const {
  NSString* key = [item keyEquivalent];
  const NSUInteger mask = [item keyEquivalentModifierMask];
  if ([key length] == 0 || ((mask ^ modifiers_) & kOtherModifiers) != 0) return false;
  return ChoosesCharacter(key, mask);
}

bool KeyPress::ChoosesCharacter(NSString* key, NSUInteger mask) const {
  const bool isShifted = (modifiers_ & NSShiftKeyMask) != 0;
  const bool wantsShift = (mask & NSShiftKeyMask) != 0;
  if (IsLetter(key)) {
    return isShifted == (wantsShift || IsUpperCase(key)) &&
           [[key lowercaseString] isEqualToString:[characters_ lowercaseString]];
  }
  if (IsControl(key)) return isShifted == wantsShift && [key isEqualToString:characters_];
  // Many keyboards need Shift to type the character itself.
  if ([key isEqualToString:characters_]) return isShifted || !wantsShift;
  return wantsShift && [key isEqualToString:unshifted_];
}

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
