#pragma once

#import <AppKit/NSApplication.h>

@class NSEvent, NSMenu;

// Keyboard routing: some keys go to the main menu before the host's web contents see them, keys that switch tabs become
// notifications for the host, and script learns of every change of the modifier keys. Main thread only.
//
// Posts "TsDispatchNotificationName" (object: the application; "action": "window/set-previous-tab-active" or
// "window/set-next-tab-active") and "TsPasteFilesIntoCurrentWebContents".

// Puts the routing into the host's application class and into all menus. What of it can't be done is logged.
void TsInstallApplicationPatch();

// In the place of the application's sendEvent:.
void TsSendEvent(NSApplication* application, SEL selector, NSEvent* event);

// In the place of every menu's performKeyEquivalent:.
BOOL TsPerformKeyEquivalent(NSMenu* menu, SEL selector, NSEvent* event);

// Posts the notification for keys that switch tabs. Whether the event is one of these, and so consumed.
bool ProcessKeyboardEvent(NSEvent* event);

// Tells script the state of the modifier keys, unless the event was made up by web contents.
void ProcessKeyboardModifierKeysEvent(NSEvent* event);

// The host's hooks: its application object has them as tsHandleKeyboardEvent: and tsPasteIfPossible.
NSEvent* TsHandleKeyboardEvent(id self, SEL selector, NSEvent* event);
bool TsPasteIfPossible(id self, SEL selector);

// Whether an item on the general pasteboard offers `type`.
[[nodiscard]] bool hasFilesInPasteboard(NSString* type);

// The state of the modifier keys in the application's current event; nil when there is none.
[[nodiscard]] NSDictionary* TsModifierKeys();
