#include "Platform/DockMenu.h"

#import <AppKit/AppKit.h>

// The Dock asks the application's delegate itself, each time the menu opens. Main thread only.
namespace tessaro::platform {

// NSApplication remembers which methods its delegate has; applicationDockMenu: was added after that.
void OfferDockMenu() {
  id<NSApplicationDelegate> delegate = [NSApp delegate];
  [NSApp setDelegate:nil];
  [NSApp setDelegate:delegate];
}

void DockMenuMayHaveChanged() {}

}  // namespace tessaro::platform
