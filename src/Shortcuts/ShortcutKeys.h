#pragma once

#import <Foundation/NSString.h>

// Names of keys in shortcuts, by virtual key code.

// "M", "F5", "Space", "↩", "Keypad 5"; typing keys by the keyboard's layout. nil for a key without a name.
[[nodiscard]] NSString* NameOfKey(unsigned short keyCode);

// As in menu items: "m", NSF5FunctionKey, " ". nil for a key without a name.
[[nodiscard]] NSString* KeyEquivalentOfKey(unsigned short keyCode);

// F1 to F20.
[[nodiscard]] bool IsFunctionKey(unsigned short keyCode);

// Whether the key types its own name.
[[nodiscard]] bool IsTypingKey(unsigned short keyCode);
