#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Linux/Tray/MenuModel.h"

namespace tessaro::platform {

// A menu on the session bus (com.canonical.dbusmenu), as trays and launchers show it. It is built when it is about to
// open, and a menu that is open changes in place.
//
// Main thread only; nothing throws. It lives with its connection.
class MenuService {
 public:
  struct Source {
    // Builds the menu.
    std::function<std::vector<MenuEntry>()> build;
    // The user has chosen a row, which is enabled, of the menu as it was built last.
    std::function<void(const MenuEntry&)> choose;
  };

  // Raises sdbus::Error. `source` must not destroy the service while it is called.
  MenuService(sdbus::IConnection& bus, const std::string& path, Source source);

  // Builds the menu anew, if somebody has read it, and tells what has changed.
  void Refresh();

 private:
  void Register();
  bool AboutToShow(std::int32_t id);
  void Event(std::int32_t id, const std::string& event);
  [[nodiscard]] const MenuEntry& Entry(std::int32_t id);
  // Whether the layout has changed.
  bool Rebuild();
  void Announce(const MenuModel::Changes& changes);

  Source source_;
  MenuModel model_;
  std::unique_ptr<sdbus::IObject> object_;
};

}  // namespace tessaro::platform
