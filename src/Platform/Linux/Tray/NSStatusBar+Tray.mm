#import <AppKit/AppKit.h>

#include <memory>

#include "Base/Ref.h"
#include "Platform/Linux/Tray/ImageData.h"
#include "Platform/Linux/Tray/MenuFeed.h"
#include "Platform/Linux/Tray/StatusNotifierItem.h"
#include "Platform/MainQueue.h"

// GNUstep declares the status bar, but has none. Here it is the desktop's tray.

namespace platform = tessaro::platform;

namespace {

// What is in the tray for a status item.
struct TrayEntry {
  explicit TrayEntry(NSString* applicationName)
      : feed([this] { return menu.get(); }), item([applicationName UTF8String], feed.Source()) {}

  Ref<NSMenu> menu;
  platform::MenuFeed feed;
  platform::StatusNotifierItem item;
};

std::string Text(NSString* text) { return text != nil ? [text UTF8String] : ""; }

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
  // This may be what one of its own rows does: the entry must outlive that.
  platform::MainQueue::Shared().Post([entry = std::move(_entry)] {});
}

- (NSStatusBar*)statusBar {
  return _bar;
}

- (CGFloat)length {
  return _itemLength;
}

// How much room a text takes is the tray's affair.
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
  _itemTitle = Adopt(static_cast<NSString*>([title copy]));
  if (_entry) _entry->item.SetLabel(Text(title));
}

- (NSString*)toolTip {
  return _itemToolTip;
}

- (void)setToolTip:(NSString*)toolTip {
  _itemToolTip = Adopt(static_cast<NSString*>([toolTip copy]));
  if (_entry) _entry->item.SetToolTip(Text(toolTip));
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
  // The tray shows it, never GNUstep: its own view needs no cell for each row.
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
  if ([item isKindOfClass:[TsTrayStatusItem class]]) [static_cast<TsTrayStatusItem*>(item) leaveTray];
  [_trayItems removeObjectIdenticalTo:item];
}

@end

// The run time takes a category's method before the class's own.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@interface NSStatusBar (Tray)
@end

@implementation NSStatusBar (Tray)

+ (NSStatusBar*)systemStatusBar {
  static auto& bar = *new Ref<NSStatusBar>(Adopt<NSStatusBar>([[TsTrayStatusBar alloc] init]));
  return bar;
}

@end
