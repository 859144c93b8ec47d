#include "Platform/DockMenu.h"

#import <AppKit/AppKit.h>

#include "Platform/Linux/Cocoa/MenuFeed.h"
#include "Platform/Linux/LauncherEntry.h"

@interface NSObject (DockMenu)
- (NSMenu*)applicationDockMenu:(NSApplication*)sender;
@end

namespace tessaro::platform {

namespace {

NSMenu* AskForMenu() {
  id delegate = [NSApp delegate];
  return [delegate respondsToSelector:@selector(applicationDockMenu:)] ? [delegate applicationDockMenu:NSApp] : nil;
}

NSString* DesktopId() {
  NSString* identifier = [[NSBundle mainBundle] bundleIdentifier];
  return identifier != nil ? identifier : [[NSProcessInfo processInfo] processName];
}

struct DockEntry {
  DockEntry() : feed(AskForMenu), entry([DesktopId() UTF8String], feed.Source()) {}

  MenuFeed feed;
  LauncherEntry entry;
};

}  // namespace

void OfferDockMenu() {
  // The bus is closed before the process ends, and then nobody asks for the menu any more.
  static auto& entry [[maybe_unused]] = *new DockEntry();
}

}  // namespace tessaro::platform
