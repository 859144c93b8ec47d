#include "Platform/Linux/Tray/MenuFeed.h"

#import <AppKit/AppKit.h>

#include "Base/TsString.h"
#include "Platform/Common/AutoreleaseScope.h"
#include "Platform/Drawing.h"
#include "Platform/Linux/AppKit/CocoaAdditions.h"
#include "Platform/Linux/AppKit/SideTable.h"

namespace tessaro::platform {

namespace {

// Stable key of a row: its action and represented object. Titles and badges change; these don't.
std::string Identity(NSMenuItem* item) {
  if ([item isSeparatorItem]) return "-";
  std::string identity = [item action] != nullptr ? sel_getName([item action]) : "";
  if (id represented = [item representedObject]) identity += ':' + TsStdString([represented description]);
  return identity;
}

void Fill(NSMenu* menu) {
  const WithoutUserShortcuts noKeys;  // another process shows the rows
  id delegate = [menu delegate];
  if ([delegate respondsToSelector:@selector(menuNeedsUpdate:)]) [delegate menuNeedsUpdate:menu];
}

// Not by -[NSMenu update]: changed items would notify the menu's own view, which fills the menu again, and so on.
bool IsEnabled(NSMenuItem* item, NSMenu* menu) {
  if (![menu autoenablesItems] || [item hasSubmenu]) return [item isEnabled];
  id validator = [NSApp targetForAction:[item action] to:[item target] from:item];
  if (validator == nil) return false;
  return ![validator respondsToSelector:@selector(validateMenuItem:)] || [validator validateMenuItem:item];
}

using PNG = std::shared_ptr<const std::vector<std::uint8_t>>;

// nullptr for nil and without a window server to draw the image. Cached, so the image must not change afterwards.
PNG PNGOf(NSImage* image) {
  if (image == nil) return nullptr;
  auto& known = SideTable<NSImage, PNG>::Shared();
  if (PNG kept = known.Get(image, nullptr)) return kept;
  const auto pixels = DrawPixels([image size], [image] {
    [image drawAtPoint:NSZeroPoint fromRect:NSZeroRect operation:NSCompositeSourceOver fraction:1];
  });
  NSData* data = [pixels representationUsingType:NSPNGFileType properties:@{}];
  if (data == nil) return nullptr;
  const auto* bytes = static_cast<const std::uint8_t*>([data bytes]);
  auto png = std::make_shared<const std::vector<std::uint8_t>>(bytes, bytes + [data length]);
  known.Set(image, png);
  return png;
}

}  // namespace

MenuService::Source MenuFeed::Source() {
  return {.build = [this] { return Build(); }, .choose = [this](const MenuEntry& entry) { Choose(entry); }};
}

std::vector<MenuEntry> MenuFeed::Build() {
  std::vector<MenuEntry> entries;
  WithAutoreleasePool([&] {
    NSMenu* menu = menu_();
    items_.clear();  // before the menu is filled: new rows take the memory of the old ones
    Fill(menu);
    entries = Read(menu);
  });
  return entries;
}

std::vector<MenuEntry> MenuFeed::Read(NSMenu* menu) {
  std::vector<MenuEntry> entries;
  entries.reserve(static_cast<std::size_t>([menu numberOfItems]));
  for (NSMenuItem* item in [menu itemArray]) entries.push_back(Read(item, menu));
  return entries;
}

MenuEntry MenuFeed::Read(NSMenuItem* item, NSMenu* menu) {
  MenuEntry entry;
  entry.identity = Identity(item);
  entry.place = items_.size();
  items_.push_back(Retain(item));
  if ([item isSeparatorItem]) {
    entry.isSeparator = true;
    return entry;
  }
  entry.isChecked = [item state] != NSOffState;
  entry.isEnabled = IsEnabled(item, menu);
  entry.label = TsStdString([item title]);
  entry.toolTip = TsStdString([item toolTip]);
  entry.icon = PNGOf([item image]);
  if ([item hasSubmenu]) entry.children = Read([item submenu]);
  return entry;
}

void MenuFeed::Choose(const MenuEntry& entry) {
  if (entry.place >= items_.size()) return;  // the menu is being filled
  WithAutoreleasePool([&] {
    // The action may rebuild the menu.
    const Ref<NSMenuItem> item = items_[entry.place];
    [NSApp sendAction:[item action] to:[item target] from:item];
  });
}

}  // namespace tessaro::platform
