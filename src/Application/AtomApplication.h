#pragma once

#import <AppKit/NSApplication.h>
#import <AppKit/NSEvent.h>

@class NSEvent, NSMenu;

// Keyboard routing: some keys go to the main menu before the host's web contents see them, keys that switch tabs become
// notifications for the host, and script learns of every change of the modifier keys. Main thread only.
//
// Posts "TsDispatchNotificationName" (object: the application; "action": "window/set-previous-tab-active" or
// "window/set-next-tab-active") and "TsPasteFilesIntoCurrentWebContents".

// Installs the routing in the host's application class and in all menus. Failures are logged.
void TsInstallApplicationPatch();

// Replaces the application's sendEvent:.
void TsSendEvent(NSApplication* application, SEL selector, NSEvent* event);

// Replaces every menu's performKeyEquivalent:.
BOOL TsPerformKeyEquivalent(NSMenu* menu, SEL selector, NSEvent* event);

// Posts the notification for keys that switch tabs. True when the event is such a key, and consumed.
bool ProcessKeyboardEvent(NSEvent* event);

// Reports the modifier keys to script, unless web contents made the event.
void ProcessKeyboardModifierKeysEvent(NSEvent* event);

// The host's hooks: its application object has them as tsHandleKeyboardEvent: and tsPasteIfPossible.
NSEvent* TsHandleKeyboardEvent(id self, SEL selector, NSEvent* event);
bool TsPasteIfPossible(id self, SEL selector);

// Whether an item on the general pasteboard offers `type`.
[[nodiscard]] bool hasFilesInPasteboard(NSString* type);

// The state of the modifier keys in the application's current event; nil if missing.
[[nodiscard]] NSDictionary* TsModifierKeys();

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
