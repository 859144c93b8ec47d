#pragma once

// Creates the status item of the menu bar.
void TsActivateStatusItem();

// Lets script describe the status item's menu each time it is about to open.
void TsListenForStatusItemMenuNeedsUpdate();
