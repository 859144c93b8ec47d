#include "Platform/Linux/AppKit/Completion.h"

#import <AppKit/AppKit.h>

#include "Platform/Linux/Theme/TsDesktopTheme.h"
#include "Platform/WindowServer.h"

namespace tessaro::platform {

namespace {

// GNUstep has measured the existing menus by its own rules.
void MeasureAgain(NSMenu* menu) {
  for (NSMenuItem* item in [menu itemArray]) {
    [menu itemChanged:item];
    MeasureAgain([item submenu]);
  }
}

bool Complete() {
  CompleteApplication();
  CompleteFonts();
  CompleteMenus();
  CompleteToolbars();
  CompleteViews();
  CompleteWindows();
  CompleteDrags();
  FollowDesktopLook();
  MeasureAgain([NSApp mainMenu]);
  return true;
}

}  // namespace

void CompleteAppKit() { [[maybe_unused]] static const bool isComplete = Complete(); }

}  // namespace tessaro::platform
