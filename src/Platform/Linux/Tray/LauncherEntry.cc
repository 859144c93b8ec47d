#include "Platform/Linux/Tray/LauncherEntry.h"

#include <tuple>

#include "Base/TsLog.h"
#include "Platform/Linux/Base/SessionBus.h"

namespace tessaro::platform {

namespace {

constexpr char kInterface[] = "com.canonical.Unity.LauncherEntry";
constexpr char kPath[] = "/com/canonical/unity/launcherentry/1";
constexpr char kMenuPath[] = "/com/canonical/unity/launcherentry/1/menu";
// Every launcher that understands these entries takes this name.
constexpr char kLauncher[] = "com.canonical.Unity";

}  // namespace

LauncherEntry::LauncherEntry(const std::string& desktopId, MenuService::Source menu)
    : uri_("application://" + desktopId + ".desktop"), menuSource_(std::move(menu)) {
  if (!HasOwner(kLauncher)) TsLogTextInfo("The Dock menu waits for a Dock: there is none yet");
  JoinBus();
}

void LauncherEntry::RefreshMenu() noexcept {
  // When the bus has just gone, the menu is read again as soon as it is back.
  if (menu_) static_cast<void>(TryOnBus([this] { menu_->Refresh(); }));
}

void LauncherEntry::Appear(sdbus::IConnection& bus) {
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
}

void LauncherEntry::Disappear() noexcept {
  launcherOwner_.reset();
  object_.reset();
  menu_.reset();
}

LauncherEntry::Properties LauncherEntry::CurrentProperties() {
  return {{"quicklist", sdbus::Variant(std::string(kMenuPath))}};
}

void LauncherEntry::Announce() {
  object_->emitSignal("Update").onInterface(kInterface).withArguments(uri_, CurrentProperties());
}

}  // namespace tessaro::platform
