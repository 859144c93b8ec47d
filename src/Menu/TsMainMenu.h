#pragma once

#import <AppKit/NSMenu.h>

@class NSArray, NSDictionary, NSEvent, NSNumber;

// Changes of single items of the application's main menu, and the news that a menu opens or has closed.
// Main thread only. Failures are logged as errors.

// Posted before a menu opens or is searched for a key equivalent. Object: the menu. User information: "menu", its
// title, and "event", what TsMenuEventDescription() says of the cause.
extern "C" __attribute__((visibility("default"))) NSString* const TsAppMenuWillOpenNotificationName;

// Attributes of an item: "title" (a string, the submenu's title as well), "visible" (a truth value), "accelerator" (a
// string as "Cmd+Shift+N", or null for none). Other keys, and values of another kind, are logged and passed over.

// The identifier is what an item's represented object, a dictionary, holds under "commandId"; of several items with the
// same one the last counts. Items that are added after the first call are unknown. False when no item has it.
bool TsMainMenuUpdateMenuItemWithCommandId(NSNumber* commandId, NSDictionary* attributes);

// The path starts at the main menu's items. A number takes that item, and goes on in its submenu; a title skips the
// items before the one that has it. False when the path leads nowhere.
bool TsMainMenuUpdateMenuItem(NSArray* path, NSDictionary* attributes);

// Empty for nil. Otherwise the modifiers of the event, its "key-code" and its "chars".
[[nodiscard]] NSDictionary* TsMenuEventDescription(NSEvent* event);

void TsPostAppNeedsUpdateNotification(NSMenu* menu, NSEvent* event);

// From now on the main menu, and the menus that are in it now, post notifications when they open and close. Called
// again, it covers what has been added since.
void TsSetupAppMenuNeedsUpdateNotification();

// The one delegate of all these menus: it posts the notifications, and passes every message on to the delegate that the
// menu had before.
@interface TsAppMenuDelegate : NSObject

+ (id)sharedDelegate;

- (void)menuWillOpen:(NSMenu*)menu;
- (void)menuDidClose:(NSMenu*)menu;

@end
