#include "Platform/Linux/Tray/MenuFeed.h"

#import <AppKit/AppKit.h>

#include "Platform/Common/AutoreleaseScope.h"
#include "Platform/Linux/Tray/ImageData.h"

namespace tessaro::platform {

namespace {

std::string Text(NSString* text) {
  const char* utf8 = [text UTF8String];
  return utf8 != nullptr ? utf8 : "";
}

// What a row does, and for what: that stays the same while its title or its badge changes.
std::string Identity(NSMenuItem* item) {
  if ([item isSeparatorItem]) return "-";
  std::string identity = [item action] != nullptr ? sel_getName([item action]) : "";
  if (id represented = [item representedObject]) identity += ':' + Text([represented description]);
  return identity;
}

void Fill(NSMenu* menu) {
  id delegate = [menu delegate];
  if ([delegate respondsToSelector:@selector(menuNeedsUpdate:)]) [delegate menuNeedsUpdate:menu];
}

// Asked of the validator rather than written to the item by -[NSMenu update]: that would tell the menu's own view of
// the change, which would have the menu filled anew, and so on without end.
bool IsEnabled(NSMenuItem* item, NSMenu* menu) {
  if (![menu autoenablesItems] || [item hasSubmenu]) return [item isEnabled];
  id validator = [NSApp targetForAction:[item action] to:[item target] from:item];
  if (validator == nil) return false;
  return ![validator respondsToSelector:@selector(validateMenuItem:)] || [validator validateMenuItem:item];
}

}  // namespace

MenuService::Source MenuFeed::Source() {
  return {.build = [this] { return Build(); }, .choose = [this](const MenuEntry& entry) { Choose(entry); }};
}

std::vector<MenuEntry> MenuFeed::Build() {
  std::vector<MenuEntry> entries;
  WithAutoreleasePool([&] {
    NSMenu* menu = menu_();
    Fill(menu);
    items_.clear();
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
    entry.kind = MenuEntry::Kind::Separator;
    return entry;
  }
  entry.isChecked = [item state] != NSOffState;
  entry.isEnabled = IsEnabled(item, menu);
  entry.label = Text([item title]);
  entry.toolTip = Text([item toolTip]);
  entry.icon = PNGData([item image]);
  if ([item hasSubmenu]) entry.children = Read([item submenu]);
  return entry;
}

void MenuFeed::Choose(const MenuEntry& entry) {
  WithAutoreleasePool([&] {
    // The action may have the menu built anew.
    const Ref<NSMenuItem> item = items_[entry.place];
    [NSApp sendAction:[item action] to:[item target] from:item];
  });
}

}  // namespace tessaro::platform
