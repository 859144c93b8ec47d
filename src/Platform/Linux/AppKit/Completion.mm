#include "Platform/Linux/AppKit/Completion.h"

#import <AppKit/AppKit.h>

#include "Platform/Linux/Theme/DesktopTheme.h"
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
  CompleteButtons();
  CompleteFonts();
  CompleteMenus();
  CompleteMenuItems();
  CompleteToolbars();
  CompleteToolbarItems();
  CompleteWindows();
  CompleteDrags();
  FollowDesktopLook();
  MeasureAgain([NSApp mainMenu]);
  return true;
}

}  // namespace

void CompleteAppKit() {
  static const bool isComplete = Complete();
  static_cast<void>(isComplete);
}

}  // namespace tessaro::platform
