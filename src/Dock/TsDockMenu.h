#pragma once

// Gives the host application's delegate the Dock menu.
void TsInstallDockMenuPatch();
