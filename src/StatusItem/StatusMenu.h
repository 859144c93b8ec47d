#pragma once

#import "Platform/Cocoa.h"

enum class StatusMenuForm {
  Full,     // each account with its unread messages
  Compact,  // one row an account
};

// Builds the account menu that script describes by `contents` into an empty menu. Values of a wrong type count as
// absent. `target` gets the actions of all rows.
void BuildStatusMenu(NSMenu* menu, id target, NSDictionary* contents, StatusMenuForm form, bool doNotDisturb);
