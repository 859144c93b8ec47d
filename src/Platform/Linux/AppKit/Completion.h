#pragma once

// The parts of CompleteAppKit() that exchange methods, one for each class. Called once.
namespace tessaro::platform {

void CompleteApplication();
void CompleteMenus();
void CompleteMenuItems();
void CompleteMenuViews();
void CompleteToolbars();
void CompleteToolbarItems();
void CompleteWindows();

}  // namespace tessaro::platform
