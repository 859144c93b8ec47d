#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <map>
#include <memory>
#include <string>

#include "Platform/Linux/Base/SessionBus.h"
#include "Platform/Linux/Tray/MenuService.h"

namespace tessaro::platform {

// The application's menu in the desktop's launcher (com.canonical.Unity.LauncherEntry, which Ubuntu's dock, Dash to
// Dock, Plank and others understand). Launchers that start later receive the menu then.
//
// Main thread only; nothing throws.
class LauncherEntry final : private BusService {
 public:
  // `desktopId` names the application's desktop entry, without ".desktop".
  LauncherEntry(const std::string& desktopId, MenuService::Source menu);
  ~LauncherEntry() { LeaveBus(); }

  // The menu has changed.
  void RefreshMenu() noexcept;

 private:
  using Properties = std::map<std::string, sdbus::Variant>;

  void Appear(sdbus::IConnection& bus) override;
  void Disappear() noexcept override;
  [[nodiscard]] static Properties CurrentProperties();
  void Announce();

  std::string uri_;
  MenuService::Source menuSource_;
  std::unique_ptr<sdbus::IObject> object_;
  std::unique_ptr<MenuService> menu_;
  sdbus::Slot launcherOwner_;
};

}  // namespace tessaro::platform
