#import <AppKit/AppKit.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsString.h"
#include "Platform/Drawing.h"
#include "Platform/Linux/AppKit/CocoaAdditions.h"
#include "Platform/Linux/Tray/MenuFeed.h"
#include "Platform/Linux/Tray/StatusNotifierItem.h"
#include "Platform/MainQueue.h"

// GNUstep declares the status bar, but has none. Here it is the desktop's tray.

namespace platform = tessaro::platform;

namespace {

// ---- Icons

using Icon = platform::StatusNotifierItem::Icon;

std::uint8_t Byte(CGFloat component) { return static_cast<std::uint8_t>(component * 255 + 0.5); }

void AppendPixel(NSColor* color, std::vector<std::uint8_t>& argb) {
  const CGFloat alpha = [color alphaComponent];
  // Clear pixels have colour components that are not numbers.
  if (alpha <= 0) {
    argb.insert(argb.end(), 4, 0);
    return;
  }
  argb.insert(argb.end(),
              {Byte(alpha), Byte([color redComponent]), Byte([color greenComponent]), Byte([color blueComponent])});
}

// Trays don't say whether they are dark or light: draw the shape dark, with a light rim.
class TemplateShape {
 public:
  explicit TemplateShape(const Icon& icon) : icon_(icon) {}

  [[nodiscard]] std::vector<std::uint8_t> Drawn() const {
    std::vector<std::uint8_t> argb;
    argb.reserve(icon_.argb.size());
    for (std::int32_t y = 0; y < icon_.height; ++y) {
      for (std::int32_t x = 0; x < icon_.width; ++x) AppendPixel(Alpha(x, y), kRimAlpha * AlphaAround(x, y), argb);
    }
    return argb;
  }

 private:
  static constexpr double kDark = 0.15;
  static constexpr double kLight = 1;
  static constexpr double kRimAlpha = 0.8;

  static void AppendPixel(double shape, double rim, std::vector<std::uint8_t>& argb) {
    const double alpha = shape + rim * (1 - shape);
    const double brightness = alpha > 0 ? (kDark * shape + kLight * rim * (1 - shape)) / alpha : 0;
    argb.push_back(Byte(alpha));
    argb.insert(argb.end(), 3, Byte(brightness));
  }

  [[nodiscard]] double Alpha(std::int32_t x, std::int32_t y) const {
    if (x < 0 || y < 0 || x >= icon_.width || y >= icon_.height) return 0;
    return icon_.argb[(static_cast<std::size_t>(y) * icon_.width + x) * 4] / 255.0;
  }

  [[nodiscard]] double AlphaAround(std::int32_t x, std::int32_t y) const {
    double most = 0;
    for (const std::int32_t dy : {-1, 0, 1}) {
      for (const std::int32_t dx : {-1, 0, 1}) most = std::max(most, Alpha(x + dx, y + dy));
    }
    return most;
  }

  const Icon& icon_;
};

// The image's pixels, a template image's in colours that are visible on every background.
Icon TrayIcon(NSImage* image) {
  if (image == nil) return {};
  const auto pixels = platform::DrawPixels([image size], [image] {
    [image drawAtPoint:NSZeroPoint fromRect:NSZeroRect operation:NSCompositeSourceOver fraction:1];
  });
  Icon icon{.width = static_cast<std::int32_t>([pixels pixelsWide]),
            .height = static_cast<std::int32_t>([pixels pixelsHigh])};
  icon.argb.reserve(static_cast<std::size_t>(icon.width) * icon.height * 4);
  for (std::int32_t y = 0; y < icon.height; ++y) {
    for (std::int32_t x = 0; x < icon.width; ++x) AppendPixel([pixels colorAtX:x y:y], icon.argb);
  }
  if ([image isTemplate]) icon.argb = TemplateShape(icon).Drawn();
  return icon;
}

// ---- Status items

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

- (NSImage*)image {
  return _itemImage;
}

- (void)setImage:(NSImage*)image {
  _itemImage = Retain(image);
  if (_entry) _entry->item.SetIcon(TrayIcon(image));
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
