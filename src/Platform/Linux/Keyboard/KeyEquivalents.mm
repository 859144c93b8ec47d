#include "Platform/Linux/Keyboard/KeyEquivalents.h"

#import <AppKit/AppKit.h>

#include "Platform/Linux/Keyboard/KeyCharacters.h"

namespace tessaro::platform {

namespace {

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

}  // namespace tessaro::platform
