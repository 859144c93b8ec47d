#pragma once

#import "Platform/Cocoa.h"

// Gives the host application's delegate the Dock menu. Needs a delegate: without one there is no Dock menu.
void TsInstallDockMenuPatch();

// The account menu in its compact form, made anew: the delegate's applicationDockMenu:.
[[nodiscard]] NSMenu* TsDockMenu(id delegate, id sender);

// The menu's actions on the delegate, which the status item's controller performs.
void TsCheckForNewMessages(id sender);
void TsToogleDoNotDisturb(id sender);
void TsComposeNewMessage(id sender);
