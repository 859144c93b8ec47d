#import "Platform/Linux/AppKit/NSWindow+Completion.h"

#import <AppKit/AppKit.h>

#include <algorithm>

#include "Platform/Linux/AppKit/Completion.h"
#include "Platform/Linux/AppKit/ReplacedMethod.h"
#include "Platform/Linux/AppKit/SideTable.h"
#import "Platform/Linux/AppKit/TsTitlebarAccessories.h"

NSString* const NSWindowDidChangeBackingPropertiesNotification = @"NSWindowDidChangeBackingPropertiesNotification";

namespace {

using Accessories = tessaro::platform::SideTable<NSWindow, Ref<TsTitlebarAccessories>>;

BOOL allowsAutomaticWindowTabbing = YES;

}  // namespace

@implementation NSWindow (Completion)

- (NSArray*)sheets {
  NSWindow* sheet = [self attachedSheet];
  return sheet != nil ? @[ sheet ] : @[];
}

+ (BOOL)allowsAutomaticWindowTabbing {
  return allowsAutomaticWindowTabbing;
}

+ (void)setAllowsAutomaticWindowTabbing:(BOOL)allows {
  allowsAutomaticWindowTabbing = allows;
}

- (NSArray*)titlebarAccessoryViewControllers {
  const auto accessories = Accessories::Shared().Get(self, nullptr);
  return accessories ? [accessories controllers] : [NSArray array];
}

- (void)addTitlebarAccessoryViewController:(NSTitlebarAccessoryViewController*)controller {
  auto accessories = Accessories::Shared().Get(self, nullptr);
  if (!accessories) {
    accessories = Adopt([[TsTitlebarAccessories alloc] initWithWindow:self]);
    Accessories::Shared().Set(self, accessories);
  }
  [accessories add:controller];
}

@end

namespace tessaro::platform {

namespace {

constexpr CGFloat kSmallest = 1;

ReplacedMethod<void (*)(NSWindow*, SEL, NSRect, BOOL, BOOL)> setFrame;
ReplacedMethod<void (*)(NSPanel*, SEL, NSEvent*)> keyDown;

NSSize LargestSize() {
  NSRect all = NSZeroRect;
  for (NSScreen* screen in [NSScreen screens]) all = NSUnionRect(all, [screen frame]);
  return all.size;
}

// X servers refuse windows without a size, and GNUstep's pictures of windows much larger than the screens take all
// memory. The upper left corner stays.
void SetFrameWithinScreens(NSWindow* window, SEL selector, NSRect frame, BOOL display, BOOL animate) {
  const NSSize borders = [window frameRectForContentRect:NSZeroRect].size;
  const NSSize largest = LargestSize();
  const CGFloat top = NSMaxY(frame);
  frame.size.width = std::clamp(NSWidth(frame), borders.width + kSmallest, borders.width + largest.width);
  frame.size.height = std::clamp(NSHeight(frame), borders.height + kSmallest, borders.height + largest.height);
  frame.origin.y = top - NSHeight(frame);
  setFrame(window, selector, frame, display, animate);
}

// GNUstep closes the panel without asking its delegate.
void CloseWithEscape(NSPanel* panel, SEL selector, NSEvent* event) {
  const bool isEscape = [[event charactersIgnoringModifiers] isEqual:@"\e"];
  isEscape && ([panel styleMask] & NSClosableWindowMask) ? [panel performClose:nil] : keyDown(panel, selector, event);
}

}  // namespace

void CompleteWindows() {
  setFrame.With([NSWindow class], "setFrame:display:animate:", SetFrameWithinScreens);
  keyDown.With([NSPanel class], "keyDown:", CloseWithEscape);
}

}  // namespace tessaro::platform
