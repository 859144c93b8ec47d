#import <AppKit/AppKit.h>

#include <memory>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsString.h"
#include "Platform/Linux/Tray/ImageData.h"
#include "Platform/Linux/Tray/MenuFeed.h"
#include "Platform/Linux/Tray/StatusNotifierItem.h"
#include "Platform/MainQueue.h"

// GNUstep declares the status bar, but has none. Here it is the desktop's tray.

namespace platform = tessaro::platform;

namespace {

// The part of a status item that is in the tray.
struct TrayEntry {
  explicit TrayEntry(NSString* applicationName)
      : feed([this] { return menu.get(); }), item(TsStdString(applicationName), feed.Source()) {}

  Ref<NSMenu> menu;
  platform::MenuFeed feed;
  platform::StatusNotifierItem item;
};

}  // namespace

@interface TsTrayStatusItem : NSStatusItem {
  NSStatusBar* _bar;
  CGFloat _itemLength;
  BOOL _isHighlighted;
  Ref<NSString> _itemTitle;
  Ref<NSString> _itemToolTip;
  Ref<NSImage> _itemImage;
  Ref<NSMenu> _itemMenu;
  std::shared_ptr<TrayEntry> _entry;
}
- (instancetype)initWithBar:(NSStatusBar*)bar length:(CGFloat)length;
- (void)leaveTray;
@end

@implementation TsTrayStatusItem

- (instancetype)initWithBar:(NSStatusBar*)bar length:(CGFloat)length {
  self = [super init];
  if (self == nil) return nil;
  _bar = bar;
  _itemLength = length;
  _entry = std::make_shared<TrayEntry>([[NSProcessInfo processInfo] processName]);
  return self;
}

- (void)dealloc {
  [self leaveTray];
  [super dealloc];
}

- (void)leaveTray {
  if (!_entry) return;
  // One of its own rows may be doing this: the entry must outlive that row's action.
  platform::MainQueue::Shared().Post([entry = std::move(_entry)] {});
}

- (NSStatusBar*)statusBar {
  return _bar;
}

- (CGFloat)length {
  return _itemLength;
}

// The tray decides how much room a text takes.
- (void)setLength:(CGFloat)length {
  _itemLength = length;
}

- (BOOL)highlightMode {
  return _isHighlighted;
}

- (void)setHighlightMode:(BOOL)highlightMode {
  _isHighlighted = highlightMode;
}

- (NSString*)title {
  return _itemTitle;
}

- (void)setTitle:(NSString*)title {
  _itemTitle = Copy(title);
  if (_entry) _entry->item.SetLabel(TsStdString(title));
}

- (NSString*)toolTip {
  return _itemToolTip;
}

- (void)setToolTip:(NSString*)toolTip {
  _itemToolTip = Copy(toolTip);
  if (_entry) _entry->item.SetToolTip(TsStdString(toolTip));
}

- (NSImage*)image {
  return _itemImage;
}

- (void)setImage:(NSImage*)image {
  _itemImage = Retain(image);
  if (_entry) _entry->item.SetIcon(platform::TrayIcon(image));
}

- (NSMenu*)menu {
  return _itemMenu;
}

- (void)setMenu:(NSMenu*)menu {
  _itemMenu = Retain(menu);
  // Only the tray shows this menu: GNUstep's view needs no cells for it.
  if (menu != nil) [[NSNotificationCenter defaultCenter] removeObserver:[menu menuRepresentation] name:nil object:menu];
  if (_entry) _entry->menu = Retain(menu);
}

@end

@interface TsTrayStatusBar : NSStatusBar {
  Ref<NSMutableArray> _trayItems;
}
@end

@implementation TsTrayStatusBar

- (instancetype)init {
  self = [super init];
  if (self) _trayItems = Adopt([[NSMutableArray alloc] init]);
  return self;
}

- (NSStatusItem*)statusItemWithLength:(CGFloat)length {
  auto item = Adopt([[TsTrayStatusItem alloc] initWithBar:self length:length]);
  [_trayItems addObject:item];
  return item.Autoreleased();
}

- (void)removeStatusItem:(NSStatusItem*)item {
  [As<TsTrayStatusItem>(item) leaveTray];
  [_trayItems removeObjectIdenticalTo:item];
}

@end

@interface NSStatusBar (Tray)
@end

@implementation NSStatusBar (Tray)

+ (NSStatusBar*)systemStatusBar {
  static Forever<Ref<TsTrayStatusBar>> bar(Adopt([[TsTrayStatusBar alloc] init]));
  return bar->get();
}

@end
