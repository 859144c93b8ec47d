#include "Platform/DockMenu.h"

#import <AppKit/AppKit.h>

#include "Base/Lifetime.h"
#include "Base/TsString.h"
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
  DockEntry() : feed(AskForMenu), entry(TsStdString(DesktopId()), feed.Source()) {}

  MenuFeed feed;
  LauncherEntry entry;
  bool isRefreshDue = false;
};

DockEntry* offered = nullptr;

}  // namespace

void OfferDockMenu() {
  static Forever<DockEntry> entry;
  offered = &*entry;
}

void DockMenuMayHaveChanged() {
  if (offered == nullptr || offered->isRefreshDue) return;
  offered->isRefreshDue = true;
  MainQueue::Shared().Post([] {
    offered->isRefreshDue = false;
    offered->entry.RefreshMenu();
  });
}

}  // namespace tessaro::platform
