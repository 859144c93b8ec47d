#include "Platform/Linux/Cocoa/MenuFeed.h"

#import <AppKit/AppKit.h>

#include "Platform/Linux/Cocoa/AutoreleaseScope.h"
#include "Platform/Linux/Cocoa/ImageData.h"

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

MenuEntry::Mark Mark(NSMenuItem* item) {
  if ([item state] != NSOffState) return MenuEntry::Mark::On;
  return [item changesState] ? MenuEntry::Mark::Off : MenuEntry::Mark::None;
}

}  // namespace

MenuService::Source MenuFeed::Source() {
  return {.build = [this] { return Build(); }, .choose = [this](const MenuEntry& entry) { Choose(entry); }};
}

std::vector<MenuEntry> MenuFeed::Build() {
  std::vector<MenuEntry> entries;
  WithAutoreleasePool([&] {
    NSMenu* menu = menu_();
    [menu update];
    items_.clear();
    entries = Read(menu);
  });
  return entries;
}

std::vector<MenuEntry> MenuFeed::Read(NSMenu* menu) {
  std::vector<MenuEntry> entries;
  entries.reserve(static_cast<std::size_t>([menu numberOfItems]));
  for (NSMenuItem* item in [menu itemArray]) entries.push_back(Read(item));
  return entries;
}

MenuEntry MenuFeed::Read(NSMenuItem* item) {
  MenuEntry entry;
  entry.identity = Identity(item);
  entry.place = items_.size();
  items_.push_back(Retain(item));
  if ([item isSeparatorItem]) {
    entry.kind = MenuEntry::Kind::Separator;
    return entry;
  }
  entry.mark = Mark(item);
  entry.isEnabled = [item isEnabled];
  entry.label = Text([item title]);
  entry.toolTip = Text([item toolTip]);
  entry.icon = PNGData([item image]);
  if ([item hasSubmenu]) entry.children = Read([item submenu]);
  return entry;
}

void MenuFeed::Choose(const MenuEntry& entry) {
  WithAutoreleasePool([&] {
    if (!entry.isEnabled || entry.place >= items_.size()) return;
    // The action may have the menu built anew.
    const Ref<NSMenuItem> item = items_[entry.place];
    [NSApp sendAction:[item action] to:[item target] from:item];
  });
}

}  // namespace tessaro::platform
