#include "Platform/Sharing.h"

#import <AppKit/AppKit.h>

#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/MainQueue.h"
#include "Platform/macOS/Guarded.h"

// NSSharingServicePicker, which asks the user and hands the files over by itself. Main thread only; no consent.
namespace tessaro::platform {

namespace {

NSRect InView(NSView* view, const ContentRectangle& rectangle) {
  const CGFloat top = [view isFlipped] ? rectangle.y : NSHeight([view bounds]) - rectangle.y - rectangle.height;
  return NSMakeRect(rectangle.x, top, rectangle.width, rectangle.height);
}

void Show(NSWindow* window, const ContentRectangle& rectangle, const std::vector<std::string>& paths) {
  if (![window isVisible]) return;
  NSMutableArray* files = [NSMutableArray array];
  for (const std::string& path : paths) [files addObject:[NSURL fileURLWithPath:TsNSString(path)]];
  NSView* view = [window contentView];
  const auto picker = Adopt([[NSSharingServicePicker alloc] initWithItems:files]);
  [picker showRelativeToRect:InView(view, rectangle) ofView:view preferredEdge:NSMinYEdge];
}

}  // namespace

void ShowSharingPicker(NSWindow* window, const ContentRectangle& rectangle, std::vector<std::string> paths) {
  // The picker's menu would hold the caller until the user has chosen.
  MainQueue::Shared().Post([kept = Retain(window), rectangle, paths = std::move(paths)] {
    const std::string failure = Guarded([&] { Show(kept, rectangle, paths); });
    if (!failure.empty()) TsLogTextError("The sharing picker failed: " + failure);
  });
}

}  // namespace tessaro::platform
