#include "native/WindowList.h"

#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSDisplayServer.h>

#include <algorithm>
#include <cstdint>

#import "native/AtomNSWindow.h"
#import "native/AtomNSWindowDelegate.h"
#include "native/ScriptEvents.h"
#import "native/WebContentsViewCocoa.h"

namespace {

// The X window's id.
NSNumber* SystemWindow(NSWindow* window) {
  void* device = [GSServerForWindow(window) windowDevice:static_cast<int>([window windowNumber])];
  return @(static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(device)));
}

NSDictionary* Describe(NSRect rect) {
  return @{
    @"x" : @(rect.origin.x),
    @"y" : @(rect.origin.y),
    @"width" : @(rect.size.width),
    @"height" : @(rect.size.height),
  };
}

NSView* MenuBarBelow(NSView* view) {
  for (NSView* each in [view subviews]) {
    if ([each isKindOfClass:[NSMenuView class]]) return each;
  }
  return nil;
}

// The centres of the titles in the window's menu bar, from the upper left corner of the window, for xdotool.
NSArray* DescribeMenuBar(NSWindow* window) {
  NSMutableArray* titles = [NSMutableArray array];
  auto* bar = static_cast<NSMenuView*>(MenuBarBelow([[window contentView] superview]));
  for (NSInteger i = 0; i < [[bar menu] numberOfItems]; ++i) {
    const NSRect rect = [bar rectOfItemAtIndex:i];
    [titles addObject:@{@"x" : @(NSMidX(rect)), @"y" : @(NSHeight([bar bounds]) / 2)}];
  }
  return titles;
}

NSNumber* Truth(bool value) { return [NSNumber numberWithBool:value]; }

}  // namespace

WindowList::WindowList(const ScriptEvents& events)
    : events_(events), delegate_(Adopt([[AtomNSWindowDelegate alloc] initWithWindows:this])) {}

WindowList::~WindowList() {
  for (const auto& window : windows_) [window setDelegate:nil];
}

NSData* WindowList::Open(NSString* title, NSSize size) {
  auto window = Adopt([[AtomNSWindow alloc] initWithTitle:title size:size]);
  [window setDelegate:delegate_];
  [window center];
  windows_.push_back(window);
  [window makeKeyAndOrderFront:nil];
  [NSApp activateIgnoringOtherApps:YES];
  return HandleOf(window);
}

void WindowList::Close(NSData* handle) { [WindowOf(handle) close]; }

void WindowList::SetTitle(NSData* handle, NSString* title) {
  AtomNSWindow* window = WindowOf(handle);
  [window setTitle:title];
  [[window webContentsView] setNeedsDisplay:YES];
}

NSDictionary* WindowList::Describe(NSData* handle) const {
  AtomNSWindow* window = WindowOf(handle);
  WebContentsViewCocoa* page = [window webContentsView];
  return @{
    @"title" : [window title],
    @"frame" : ::Describe([window frame]),
    @"content" : ::Describe([[window contentView] frame]),
    @"menuBar" : DescribeMenuBar(window),
    @"isVisible" : Truth([window isVisible]),
    @"isKey" : Truth([window isKeyWindow]),
    @"isMain" : Truth([window isMainWindow]),
    @"isPageFocused" : Truth([window firstResponder] == page),
    @"systemWindow" : SystemWindow(window),
    @"typedText" : [page typedText],
    @"droppedFiles" : [page droppedFiles],
  };
}

NSData* WindowList::HandleOf(id object) { return [NSData dataWithBytes:&object length:sizeof object]; }

void WindowList::WillClose(AtomNSWindow* window) {
  const auto position =
      std::find_if(windows_.begin(), windows_.end(), [window](const auto& each) { return each.get() == window; });
  if (position == windows_.end()) return;
  // The window is still closing: it must outlive this call.
  static_cast<void>(Retain(window).Autoreleased());
  windows_.erase(position);
  events_.Emit(@"window-closed", HandleOf(window));
}

AtomNSWindow* WindowList::WindowOf(NSData* handle) const {
  const auto position = std::find_if(windows_.begin(), windows_.end(),
                                     [handle](const auto& window) { return [HandleOf(window) isEqual:handle]; });
  if (position == windows_.end()) [NSException raise:NSInvalidArgumentException format:@"There is no such window"];
  return *position;
}
