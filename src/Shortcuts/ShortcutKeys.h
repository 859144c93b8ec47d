#pragma once

#import <Foundation/NSString.h>

// What keys are called in shortcuts, by their virtual key codes.

// "M", "F5", "Space", "↩", "Keypad 5"; what is typed, as the keyboard's layout has it. nil for a key without a name.
[[nodiscard]] NSString* NameOfKey(unsigned short keyCode);

// As menu items name theirs: "m", NSF5FunctionKey, " ". nil for a key without a name.
[[nodiscard]] NSString* KeyEquivalentOfKey(unsigned short keyCode);

// F1 to F20.
[[nodiscard]] bool IsFunctionKey(unsigned short keyCode);

// Whether it types what it is called.
[[nodiscard]] bool IsTypingKey(unsigned short keyCode);
