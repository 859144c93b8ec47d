#include "Platform/Linux/Tray/LauncherEntry.h"

#include <tuple>
#include <utility>

#include "Platform/DockMenu.h"
#include "Platform/Linux/Base/BusNames.h"

namespace tessaro::platform {

namespace {

constexpr char kInterface[] = "com.canonical.Unity.LauncherEntry";
constexpr char kPath[] = "/com/canonical/unity/launcherentry/1";
constexpr char kMenuPath[] = "/com/canonical/unity/launcherentry/1/menu";
// Every launcher that understands these entries takes this name.
constexpr char kLauncher[] = "com.canonical.Unity";

}  // namespace

LauncherEntry::LauncherEntry(const std::string& desktopId, MenuService::Source menu)
    : uri_("application://" + desktopId + ".desktop"),
      menuSource_(std::move(menu)),
      subscription_(SessionBus::Shared().Listen({[this] { Appear(); }, [this] { Disappear(); }})) {}

void LauncherEntry::RefreshMenu() noexcept {
  if (!menu_) return;
  try {
    menu_->Refresh();
  } catch (const sdbus::Error&) {
    // The bus has just gone; the menu is read again when it is back.
  }
}

bool LauncherEntry::IsLauncherRunning() noexcept { return HasOwner(kLauncher); }

void LauncherEntry::Appear() noexcept {
  auto& bus = *SessionBus::Shared().Connection();
  try {
    menu_ = std::make_unique<MenuService>(bus, kMenuPath, menuSource_);
    object_ = sdbus::createObject(bus, kPath);
    object_->registerSignal("Update").onInterface(kInterface).withParameters<std::string, Properties>();
    object_->registerMethod("Query").onInterface(kInterface).implementedAs([this] {
      return std::tuple(uri_, CurrentProperties());
    });
    object_->finishRegistration();
    launcherOwner_ = WatchOwner(bus, kLauncher, [this](bool isThere) {
      if (isThere) Announce();
    });
    Announce();
  } catch (const sdbus::Error&) {
    Disappear();
  }
}

void LauncherEntry::Disappear() noexcept {
  launcherOwner_.reset();
  object_.reset();
  menu_.reset();
}

LauncherEntry::Properties LauncherEntry::CurrentProperties() const {
  return {{"quicklist", sdbus::Variant(std::string(kMenuPath))}};
}

void LauncherEntry::Announce() {
  object_->emitSignal("Update").onInterface(kInterface).withArguments(uri_, CurrentProperties());
}

bool IsDockAvailable() { return LauncherEntry::IsLauncherRunning(); }

}  // namespace tessaro::platform
