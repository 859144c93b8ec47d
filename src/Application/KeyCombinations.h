#pragma once

#import <AppKit/NSEvent.h>

// Key combinations of events. Each predicate requires the modifiers in its name, and that the others of Command, Option
// and Control are off; Shift is ignored unless the name has it.

[[nodiscard]] bool IsCommandKeyPressed(NSEvent* event);
[[nodiscard]] bool IsCommandOptionKeyPressed(NSEvent* event);
[[nodiscard]] bool IsCommandControlKeyPressed(NSEvent* event);
[[nodiscard]] bool IsCommandShiftKeyPressed(NSEvent* event);

// With these characters, ignoring modifiers except Shift.
[[nodiscard]] bool IsCommandAndStringKey(NSEvent* event, NSString* characters);
[[nodiscard]] bool IsCommandShiftAndStringKey(NSEvent* event, NSString* characters);

// With the key of a virtual key code.
[[nodiscard]] bool IsCommandAndKeyCodeKey(NSEvent* event, unsigned short keyCode);
[[nodiscard]] bool IsCommandOptionAndKeyCodeKey(NSEvent* event, unsigned short keyCode);
[[nodiscard]] bool IsCommandControlAndKeyCodeKey(NSEvent* event, unsigned short keyCode);
[[nodiscard]] bool IsCommandShiftAndKeyCodeKey(NSEvent* event, unsigned short keyCode);

// A key press with Command or Control.
[[nodiscard]] bool IsEventForKeyEquivalent(NSEvent* event);

// A key press that the main menu gets before the web contents do.
[[nodiscard]] bool TsIsSpecialEvent(NSEvent* event);

inline constexpr unsigned short kTsKeyD = 2;
inline constexpr unsigned short kTsKeyComma = 43;
inline constexpr unsigned short kTsKeySpace = 49;
inline constexpr unsigned short kTsKeyLeftArrow = 123;
inline constexpr unsigned short kTsKeyRightArrow = 124;
inline constexpr unsigned short kTsKeyDownArrow = 125;
inline constexpr unsigned short kTsKeyUpArrow = 126;
