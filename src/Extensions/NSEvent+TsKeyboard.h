#pragma once

#import <AppKit/NSEvent.h>

@class NSMutableDictionary, NSString;

// AppKit's names for these differ between its versions; the values don't.
inline constexpr NSUInteger kTsCapsLock = 0x10000;
inline constexpr NSUInteger kTsShift = 0x20000;
inline constexpr NSUInteger kTsControl = 0x40000;
inline constexpr NSUInteger kTsOption = 0x80000;
inline constexpr NSUInteger kTsCommand = 0x100000;
inline constexpr NSUInteger kTsNumericPad = 0x200000;
inline constexpr NSUInteger kTsHelp = 0x400000;
inline constexpr NSUInteger kTsFunction = 0x800000;

inline constexpr NSUInteger kTsKeyDown = 10;
inline constexpr NSUInteger kTsKeyUp = 11;
inline constexpr NSUInteger kTsFlagsChanged = 12;

@interface NSEvent (TsKeyboard)

// Whether the event is a key press, a key release or a change of the modifiers.
- (BOOL)ts_isKeyboardEvent;

// Whether any of the modifiers is held.
- (BOOL)ts_holdsModifier:(NSUInteger)modifiers;

// The modifiers after the event: on some systems the event of the Caps Lock key carries the state before it.
- (NSUInteger)ts_settledModifierFlags;

// The key by its place on the keyboard, whatever the layout: a virtual key code. 0 unless this is a keyboard event.
- (unsigned short)ts_virtualKeyCode;

// The characters of the key, with all modifiers and without those but Shift. nil for keys that type none, and unless a
// key was pressed or released. Command never turns letters into control characters, whichever key the user has chosen
// for it.
- (NSString*)ts_characters;
- (NSString*)ts_charactersIgnoringModifiers;

// Whether the location is (0, 0), as in the synthetic events of web contents.
- (BOOL)ts_hasNoLocation;

// The description of an event for script: "mouse?", "keyboard?", and "function-", "control-", "option-", "command-" and
// "shift-modifier?".
- (NSMutableDictionary*)ts_modifierDescription;

@end
