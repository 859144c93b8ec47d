#include "Application/KeyCombinations.h"

#import <Foundation/Foundation.h>

#import "Extensions/NSEvent+TsKeyboard.h"

namespace {

struct Modifiers {
  NSUInteger required;
  NSUInteger off;
};

constexpr Modifiers kCommandOnly{kTsCommand, kTsOption | kTsControl};
constexpr Modifiers kCommandOption{kTsCommand | kTsOption, kTsControl};
constexpr Modifiers kCommandControl{kTsCommand | kTsControl, kTsOption};
constexpr Modifiers kCommandShift{kTsCommand | kTsShift, kTsOption | kTsControl};

bool Holds(NSEvent* event, Modifiers modifiers) {
  return ([event modifierFlags] & (modifiers.required | modifiers.off)) == modifiers.required;
}

bool HasCharacters(NSEvent* event, NSString* characters) {
  return [[event ts_charactersIgnoringModifiers] isEqualToString:characters];
}

bool HasKeyCode(NSEvent* event, unsigned short keyCode) {
  return [event ts_isKeyboardEvent] && [event ts_virtualKeyCode] == keyCode;
}

}  // namespace

bool IsCommandKeyPressed(NSEvent* event) { return Holds(event, kCommandOnly); }

bool IsCommandOptionKeyPressed(NSEvent* event) { return Holds(event, kCommandOption); }

bool IsCommandControlKeyPressed(NSEvent* event) { return Holds(event, kCommandControl); }

bool IsCommandShiftKeyPressed(NSEvent* event) { return Holds(event, kCommandShift); }

bool IsCommandAndStringKey(NSEvent* event, NSString* characters) {
  return IsCommandKeyPressed(event) && HasCharacters(event, characters);
}

bool IsCommandShiftAndStringKey(NSEvent* event, NSString* characters) {
  return IsCommandShiftKeyPressed(event) && HasCharacters(event, characters);
}

bool IsCommandAndKeyCodeKey(NSEvent* event, unsigned short keyCode) {
  return IsCommandKeyPressed(event) && HasKeyCode(event, keyCode);
}

bool IsCommandOptionAndKeyCodeKey(NSEvent* event, unsigned short keyCode) {
  return IsCommandOptionKeyPressed(event) && HasKeyCode(event, keyCode);
}

bool IsCommandControlAndKeyCodeKey(NSEvent* event, unsigned short keyCode) {
  return IsCommandControlKeyPressed(event) && HasKeyCode(event, keyCode);
}

bool IsCommandShiftAndKeyCodeKey(NSEvent* event, unsigned short keyCode) {
  return IsCommandShiftKeyPressed(event) && HasKeyCode(event, keyCode);
}

bool IsEventForKeyEquivalent(NSEvent* event) {
  return [event type] == kTsKeyDown && [event ts_holdsModifier:kTsCommand | kTsControl];
}

bool TsIsSpecialEvent(NSEvent* event) {
  if ([event type] != kTsKeyDown || ![event ts_holdsModifier:kTsCommand]) return false;
  return IsCommandAndKeyCodeKey(event, kTsKeyComma) || IsCommandAndKeyCodeKey(event, kTsKeyLeftArrow) ||
         IsCommandAndKeyCodeKey(event, kTsKeyRightArrow) || IsCommandAndKeyCodeKey(event, kTsKeyDownArrow) ||
         IsCommandAndKeyCodeKey(event, kTsKeyUpArrow) || IsCommandOptionAndKeyCodeKey(event, kTsKeyDownArrow) ||
         IsCommandOptionAndKeyCodeKey(event, kTsKeyUpArrow) || IsCommandControlAndKeyCodeKey(event, kTsKeySpace) ||
         IsCommandShiftAndStringKey(event, @"D") || IsCommandShiftAndKeyCodeKey(event, kTsKeyD) ||
         IsCommandControlAndKeyCodeKey(event, kTsKeyLeftArrow) ||
         IsCommandControlAndKeyCodeKey(event, kTsKeyRightArrow) ||
         IsCommandOptionAndKeyCodeKey(event, kTsKeyLeftArrow) || IsCommandOptionAndKeyCodeKey(event, kTsKeyRightArrow);
}
