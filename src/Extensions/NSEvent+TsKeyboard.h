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

// Whether a key is the cause: it was pressed or released, or a modifier changed.
- (BOOL)ts_isKeyboardEvent;

// Whether any of the modifiers is held.
- (BOOL)ts_holdsModifier:(NSUInteger)modifiers;

// The modifiers as they are once the event has happened: on some systems that of the Caps Lock key itself tells of the
// state before.
- (NSUInteger)ts_settledModifierFlags;

// The key by its place on the keyboard, whatever the layout: a virtual key code. 0 unless a key is the cause.
- (unsigned short)ts_virtualKeyCode;

// The characters of the key, with all modifiers and without those but Shift. nil for keys that type none, and unless a
// key was pressed or released. Command does not make control characters of letters, whichever key the user has it on.
- (NSString*)ts_characters;
- (NSString*)ts_charactersIgnoringModifiers;

// Whether the window's coordinates say (0, 0), as those of events do that web contents have made up.
- (BOOL)ts_hasNoLocation;

// What script is told of any event: "mouse?", "keyboard?", and "function-", "control-", "option-", "command-" and
// "shift-modifier?".
- (NSMutableDictionary*)ts_modifierDescription;

@end
