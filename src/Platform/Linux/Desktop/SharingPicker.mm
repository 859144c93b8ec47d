#import <AppKit/AppKit.h>

#include <utility>

#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Cocoa.h"
#include "Platform/Linux/Desktop/ShareTargets.h"
#include "Platform/MainQueue.h"
#include "Platform/Sharing.h"

using namespace tessaro::platform;

namespace {

using Kind = ShareTarget::Kind;

// Sharing with this application itself is pointless.
bool IsOurs(const ShareTarget& target) {
  NSString* ours = [[NSBundle mainBundle] bundleIdentifier];
  return ours != nil && [TsNSString(target.identifier) caseInsensitiveCompare:ours] == NSOrderedSame;
}

NSString* TitleOf(const ShareTarget& target) {
  NSString* name = TsNSString(target.name);
  switch (target.kind) {
    case Kind::Mail:
      return [NSString stringWithFormat:NSLocalizedString(@"Mail with %@", nil), name];
    case Kind::Bluetooth:
      return NSLocalizedString(@"Send by Bluetooth", nil);
    case Kind::Application:
      return [NSString stringWithFormat:NSLocalizedString(@"Open with %@", nil), name];
  }
  return name;
}

}  // namespace

// The menu's target while the menu is open.
@interface TsSharingMenu : NSObject {
  std::vector<std::string> _paths;
  std::vector<ShareTarget> _targets;
}

- (instancetype)initWithPaths:(std::vector<std::string>)paths;
- (void)popUpBelow:(const ContentRectangle&)rectangle of:(NSWindow*)window;

@end

@implementation TsSharingMenu

- (instancetype)initWithPaths:(std::vector<std::string>)paths {
  self = [super init];
  if (!self) return nil;
  _paths = std::move(paths);
  _targets = ShareTargets(_paths);
  std::erase_if(_targets, IsOurs);
  return self;
}

- (Ref<NSMenu>)menu {
  auto menu = Adopt([[NSMenu alloc] initWithTitle:@""]);
  for (std::size_t i = 0; i < _targets.size(); ++i) {
    if (i > 0 && _targets[i].kind == Kind::Application && _targets[i - 1].kind != Kind::Application) {
      [menu addItem:[NSMenuItem separatorItem]];
    }
    const auto item = Adopt([[NSMenuItem alloc] initWithTitle:TitleOf(_targets[i])
                                                       action:@selector(share:)
                                                keyEquivalent:@""]);
    [item setTarget:self];
    [item setTag:static_cast<NSInteger>(i)];
    [menu addItem:item];
  }
  if (_targets.empty()) {
    // An item without an action is disabled.
    [menu addItemWithTitle:NSLocalizedString(@"No Applications", nil) action:nullptr keyEquivalent:@""];
  }
  return menu;
}

- (void)popUpBelow:(const ContentRectangle&)rectangle of:(NSWindow*)window {
  NSView* content = [window contentView];
  const CGFloat below = rectangle.y + rectangle.height;
  const NSPoint corner = NSMakePoint(rectangle.x, [content isFlipped] ? below : [content bounds].size.height - below);
  const auto menu = [self menu];
  [menu popUpMenuPositioningItem:nil atLocation:corner inView:content];
}

- (void)share:(NSMenuItem*)item {
  const ShareTarget& target = _targets[static_cast<std::size_t>([item tag])];
  if (const auto shared = ShareWith(target, _paths); !shared) {
    TsLogError(@"Couldn't share files with %s: %s", target.identifier.c_str(), shared.error().message.c_str());
  }
}

@end

namespace tessaro::platform {

void ShowSharingPicker(NSWindow* window, const ContentRectangle& rectangle, std::vector<std::string> paths) {
  const auto menu = Adopt([[TsSharingMenu alloc] initWithPaths:std::move(paths)]);
  MainQueue::Shared().Post([menu, window = Retain(window), rectangle] {
    if ([window isVisible]) [menu popUpBelow:rectangle of:window];
  });
}

}  // namespace tessaro::platform
