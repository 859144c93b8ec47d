#pragma once

// The parts of CompleteAppKit() that exchange methods. Called once, on the main thread.
namespace tessaro::platform {

void CompleteApplication();
// Puts the files and texts of drags from other programs on the drag pasteboard: GNUstep announces such drags, but
// leaves the pasteboard as it was, so no view would accept them.
void CompleteDrags();
void CompleteFonts();
void CompleteMenus();
void CompleteToolbars();
void CompleteViews();
void CompleteWindows();

}  // namespace tessaro::platform
