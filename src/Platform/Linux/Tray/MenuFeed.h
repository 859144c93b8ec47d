#pragma once

#import <AppKit/NSMenu.h>

#include <functional>
#include <vector>

#include "Base/Ref.h"
#include "Platform/Linux/Tray/MenuService.h"

namespace tessaro::platform {

// Makes the entries of an NSMenu, and performs the actions of the chosen rows. Main thread only; Cocoa's exceptions are
// logged.
class MenuFeed {
 public:
  // `menu` gives the menu each time it is about to open; its delegate fills it then.
  explicit MenuFeed(std::function<NSMenu*()> menu) : menu_(std::move(menu)) {}
  MenuFeed(const MenuFeed&) = delete;
  MenuFeed& operator=(const MenuFeed&) = delete;

  // The feed must outlive it.
  [[nodiscard]] MenuService::Source Source();

 private:
  [[nodiscard]] std::vector<MenuEntry> Build();
  [[nodiscard]] std::vector<MenuEntry> Read(NSMenu* menu);
  [[nodiscard]] MenuEntry Read(NSMenuItem* item, NSMenu* menu);
  void Choose(const MenuEntry& entry);

  std::function<NSMenu*()> menu_;
  std::vector<Ref<NSMenuItem>> items_;  // by the entries' places
};

}  // namespace tessaro::platform
