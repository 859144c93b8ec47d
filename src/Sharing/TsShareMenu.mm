#include "Sharing/TsShareMenu.h"

#include <utility>
#include <vector>

#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Cocoa.h"
#include "Platform/MainQueue.h"
#include "Platform/Sharing.h"

namespace platform = tessaro::platform;

namespace {

using Kind = platform::ShareTarget::Kind;

// We would be passing them to ourselves.
bool IsOurs(const platform::ShareTarget& target) {
  NSString* ours = [[NSBundle mainBundle] bundleIdentifier];
  return ours != nil && [TsNSString(target.identifier) caseInsensitiveCompare:ours] == NSOrderedSame;
}

std::vector<std::string> PresentFiles(NSArray* paths) {
  std::vector<std::string> present;
  for (id path in paths) {
    if ([path isKindOfClass:[NSString class]] && [[NSFileManager defaultManager] fileExistsAtPath:path]) {
      present.push_back(TsStdString(path));
    } else {
      TsLogWarning(@"There is no file %@ to share", path);
    }
  }
  return present;
}

NSString* TitleOf(const platform::ShareTarget& target) {
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

// The menu's target, as long as it is open.
@interface TsShareMenu : NSObject {
  std::vector<std::string> _paths;
  std::vector<platform::ShareTarget> _targets;
}

- (instancetype)initWithPaths:(std::vector<std::string>)paths;
- (void)popUpBelow:(NSRect)rectangle of:(NSWindow*)window;

@end

@implementation TsShareMenu

- (instancetype)initWithPaths:(std::vector<std::string>)paths {
  self = [super init];
  if (!self) return nil;
  _paths = std::move(paths);
  _targets = platform::ShareTargets(_paths);
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
    // Without an action it can't be chosen.
    [menu addItemWithTitle:NSLocalizedString(@"No Applications", nil) action:nullptr keyEquivalent:@""];
  }
  return menu;
}

- (void)popUpBelow:(NSRect)rectangle of:(NSWindow*)window {
  NSView* content = [window contentView];
  const CGFloat below = NSMaxY(rectangle);
  const NSPoint corner =
      NSMakePoint(NSMinX(rectangle), [content isFlipped] ? below : [content bounds].size.height - below);
  [[self menu] popUpMenuPositioningItem:nil atLocation:corner inView:content];
}

- (void)share:(NSMenuItem*)item {
  const platform::ShareTarget& target = _targets[static_cast<std::size_t>([item tag])];
  if (!platform::ShareFiles(target, _paths)) TsLogError(@"Couldn't share files with %s", target.identifier.c_str());
}

@end

void TsShareFiles(NSWindow* window, NSArray* paths, NSRect rectangle) {
  std::vector<std::string> present = PresentFiles(paths);
  if (present.empty()) return TsLogError(@"There are no files to share");
  const auto menu = Adopt([[TsShareMenu alloc] initWithPaths:std::move(present)]);
  platform::MainQueue::Shared().Post([menu, window = Retain(window), rectangle] {
    if ([window isVisible]) [menu popUpBelow:rectangle of:window];
  });
}
