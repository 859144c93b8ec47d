#include "Platform/DockMenu.h"

#import <AppKit/AppKit.h>

#include <memory>

#include "Platform/Linux/Tray/LauncherEntry.h"
#include "Platform/Linux/Tray/MenuFeed.h"
#include "Platform/MainQueue.h"

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
  bool isRefreshDue = false;
};

// Once there is one, it is there until the process ends; the bus is closed before, and then nobody asks for the menu.
DockEntry*& TheDockEntry() {
  static DockEntry* entry = nullptr;
  return entry;
}

void Refresh() {
  TheDockEntry()->isRefreshDue = false;
  TheDockEntry()->entry.RefreshMenu();
}

}  // namespace

void OfferDockMenu() {
  if (TheDockEntry() == nullptr) TheDockEntry() = std::make_unique<DockEntry>().release();
}

void DockMenuMayHaveChanged() {
  DockEntry* dock = TheDockEntry();
  if (dock == nullptr || dock->isRefreshDue) return;
  dock->isRefreshDue = true;
  MainQueue::Shared().Post(Refresh);
}

}  // namespace tessaro::platform
