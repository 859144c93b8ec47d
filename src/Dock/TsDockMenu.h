#pragma once

#import "Platform/Cocoa.h"

// Adds the Dock menu to the host application's delegate; without a delegate there is no Dock menu.
void TsInstallDockMenuPatch();

// A new compact account menu: the delegate's applicationDockMenu:.
[[nodiscard]] NSMenu* TsDockMenu(id delegate, id sender);

// The menu's actions on the delegate, which the status item's controller performs.
void TsCheckForNewMessages(id sender);
void TsToogleDoNotDisturb(id sender);
void TsComposeNewMessage(id sender);
