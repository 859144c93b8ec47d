#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Linux/Base/SessionBus.h"
#include "Platform/Linux/Tray/MenuService.h"

namespace tessaro::platform {

// An item in the desktop's tray (org.kde.StatusNotifierItem) with a menu. It registers with the tray, and again
// whenever the tray or the bus has come back.
//
// Main thread only; nothing throws.
class StatusNotifierItem final : private BusService {
 public:
  struct Icon {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint8_t> argb;  // four bytes a pixel, not multiplied by alpha

    bool operator==(const Icon&) const = default;
  };

  // `applicationName` is the item's name in the tray and its settings.
  StatusNotifierItem(std::string applicationName, MenuService::Source menu);
  ~StatusNotifierItem();

  void SetIcon(Icon icon);
  // A text beside the icon, where the tray has room for one; elsewhere it is part of the tool tip.
  void SetLabel(std::string label);

 private:
  void Appear(sdbus::IConnection& bus) override;
  void Disappear() noexcept override;
  void RegisterProperties();
  void RegisterSignals();
  void AnnounceToWatcher();
  void Emit(const char* signal) noexcept;

  std::string applicationName_;
  std::string busName_;
  MenuService::Source menuSource_;
  Icon icon_;
  std::string label_;

  std::unique_ptr<sdbus::IObject> object_;
  std::unique_ptr<MenuService> menu_;
  std::unique_ptr<sdbus::IProxy> watcher_;
  sdbus::Slot watcherOwner_;
};

}  // namespace tessaro::platform
