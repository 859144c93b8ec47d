#import "Extensions/NSEvent+TsKeyboard.h"

#import <Foundation/Foundation.h>

#include "Platform/KeyboardLayout.h"

static constexpr unsigned short kCapsLockKey = 57;

static bool IsControl(NSString* characters) {
  return [characters length] == 1 && [characters characterAtIndex:0] < 0x20;
}

@implementation NSEvent (TsKeyboard)

- (BOOL)ts_isKeyboardEvent {
  const NSUInteger type = [self type];
  return type == kTsKeyDown || type == kTsKeyUp || type == kTsFlagsChanged;
}

- (BOOL)ts_holdsModifier:(NSUInteger)modifiers {
  return ([self modifierFlags] & modifiers) != 0;
}

- (NSUInteger)ts_settledModifierFlags {
  const NSUInteger flags = [self modifierFlags];
  if ([self type] != kTsFlagsChanged || [self ts_virtualKeyCode] != kCapsLockKey) return flags;
  return (flags & ~kTsCapsLock) | ([NSEvent modifierFlags] & kTsCapsLock);
}

- (unsigned short)ts_virtualKeyCode {
  return [self ts_isKeyboardEvent] ? tessaro::platform::VirtualKeyCode([self keyCode]) : 0;
}

- (BOOL)ts_isKeyPressOrRelease {
  const NSUInteger type = [self type];
  return type == kTsKeyDown || type == kTsKeyUp;
}

- (NSString*)ts_characters {
  if (![self ts_isKeyPressOrRelease]) return nil;
  NSString* plain = [self charactersIgnoringModifiers];
  const bool isOnlyCommand = ([self modifierFlags] & (kTsCommand | kTsControl)) == kTsCommand;
  return isOnlyCommand && IsControl([self characters]) && !IsControl(plain) ? plain : [self characters];
}

- (NSString*)ts_charactersIgnoringModifiers {
  return [self ts_isKeyPressOrRelease] ? [self charactersIgnoringModifiers] : nil;
}

- (BOOL)ts_hasNoLocation {
  return NSEqualPoints([self locationInWindow], NSZeroPoint);
}

- (NSMutableDictionary*)ts_modifierDescription {
  const auto truth = [](bool value) { return [NSNumber numberWithBool:value]; };
  const auto modifier = [&](NSUInteger flag) { return truth([self ts_holdsModifier:flag]); };
  const bool isKeyboard = [self ts_isKeyboardEvent];
  return [NSMutableDictionary dictionaryWithObjectsAndKeys:truth(!isKeyboard), @"mouse?",                 //
                                                           truth(isKeyboard), @"keyboard?",               //
                                                           modifier(kTsFunction), @"function-modifier?",  //
                                                           modifier(kTsControl), @"control-modifier?",    //
                                                           modifier(kTsOption), @"option-modifier?",      //
                                                           modifier(kTsCommand), @"command-modifier?",    //
                                                           modifier(kTsShift), @"shift-modifier?", nil];
}

@end
