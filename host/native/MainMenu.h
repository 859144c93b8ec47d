#pragma once

#import <AppKit/NSMenu.h>

#include "Base/Ref.h"

// The application's main menu, in the user's language. Each item of a script command has a
// dictionary with its number under "commandId" as its represented object, and sends performCommand: unless Cocoa has an
// action for it.
[[nodiscard]] Ref<NSMenu> MakeMainMenu();

// The menu as arrays of dictionaries: "title", and where there is one "key", "modifiers", "commandId", "items".
[[nodiscard]] NSArray* DescribeMenu(NSMenu* menu);
