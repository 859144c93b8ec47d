#include "Platform/Linux/Tray/StatusNotifierItem.h"

#include <unistd.h>

#include <utility>

#include "Base/TsLog.h"
#include "Platform/Linux/Base/SessionBus.h"

namespace tessaro::platform {

namespace {

constexpr char kInterface[] = "org.kde.StatusNotifierItem";
constexpr char kPath[] = "/StatusNotifierItem";
constexpr char kMenuPath[] = "/StatusNotifierItem/Menu";
constexpr char kWatcher[] = "org.kde.StatusNotifierWatcher";
constexpr char kWatcherPath[] = "/StatusNotifierWatcher";

using Picture = sdbus::Struct<std::int32_t, std::int32_t, std::vector<std::uint8_t>>;
using Pictures = std::vector<Picture>;
using ToolTip = sdbus::Struct<std::string, Pictures, std::string, std::string>;

// The protocol's form: process id, and a number for each of its items.
std::string NextBusName() {
  static int count = 0;
  return std::string(kInterface) + "-" + std::to_string(getpid()) + "-" + std::to_string(++count);
}

}  // namespace

StatusNotifierItem::StatusNotifierItem(std::string applicationName, MenuService::Source menu)
    : applicationName_(std::move(applicationName)), busName_(NextBusName()), menuSource_(std::move(menu)) {
  if (!HasOwner(kWatcher)) {
    TsLogTextInfo("The desktop shows no status items yet; the status item appears when it does");
  }
  JoinBus();
}

StatusNotifierItem::~StatusNotifierItem() {
  // Trays drop an item when its name disappears.
  if (object_) static_cast<void>(TryOnBus([this] { SessionBus::Shared().Connection()->releaseName(busName_); }));
  LeaveBus();
}

void StatusNotifierItem::SetIcon(Icon icon) {
  if (icon == icon_) return;
  icon_ = std::move(icon);
  Emit("NewIcon");
}

void StatusNotifierItem::SetLabel(std::string label) {
  if (label == label_) return;
  label_ = std::move(label);
  Emit("NewToolTip");
  if (!object_) return;
  static_cast<void>(TryOnBus(
      [this] { object_->emitSignal("XAyatanaNewLabel").onInterface(kInterface).withArguments(label_, label_); }));
}

void StatusNotifierItem::Appear(sdbus::IConnection& bus) {
  menu_ = std::make_unique<MenuService>(bus, kMenuPath, menuSource_);
  object_ = sdbus::createObject(bus, kPath);
  RegisterProperties();
  RegisterSignals();
  object_->finishRegistration();
  bus.requestName(busName_);
  watcher_ = sdbus::createProxy(bus, kWatcher, kWatcherPath);
  watcherOwner_ = WatchOwner(bus, kWatcher, [this](bool isThere) {
    if (isThere) AnnounceToWatcher();
  });
  AnnounceToWatcher();
}

void StatusNotifierItem::Disappear() noexcept {
  watcherOwner_.reset();
  watcher_.reset();
  object_.reset();
  menu_.reset();
}

void StatusNotifierItem::RegisterProperties() {
  const auto add = [this](const char* name, auto getter) {
    object_->registerProperty(name).onInterface(kInterface).withGetter(std::move(getter));
  };
  const auto text = [](const char* value) { return [value] { return std::string(value); }; };
  const auto noPictures = [] { return Pictures(); };

  add("Category", text("Communications"));
  add("Id", [this] { return applicationName_; });
  add("Title", [this] { return applicationName_; });
  add("Status", text("Active"));
  add("WindowId", [] { return std::int32_t{0}; });
  add("IconThemePath", text(""));
  add("IconName", text(""));
  add("IconPixmap", [this] { return Pictures{{icon_.width, icon_.height, icon_.argb}}; });
  add("OverlayIconName", text(""));
  add("OverlayIconPixmap", noPictures);
  add("AttentionIconName", text(""));
  add("AttentionIconPixmap", noPictures);
  add("AttentionMovieName", text(""));
  add("ToolTip", [this] {
    return ToolTip{"", Pictures(), label_.empty() ? applicationName_ : applicationName_ + ": " + label_, ""};
  });
  add("ItemIsMenu", [] { return true; });
  add("Menu", [] { return sdbus::ObjectPath(kMenuPath); });
  add("XAyatanaLabel", [this] { return label_; });
  add("XAyatanaLabelGuide", [this] { return label_; });
}

// Without Activate trays open the menu, as ItemIsMenu asks.
void StatusNotifierItem::RegisterSignals() {
  for (const char* signal : {"NewTitle", "NewIcon", "NewAttentionIcon", "NewOverlayIcon", "NewToolTip"}) {
    object_->registerSignal(signal).onInterface(kInterface);
  }
  object_->registerSignal("NewStatus").onInterface(kInterface).withParameters<std::string>("status");
  object_->registerSignal("XAyatanaNewLabel")
      .onInterface(kInterface)
      .withParameters<std::string, std::string>("label", "guide");
}

void StatusNotifierItem::AnnounceToWatcher() {
  watcher_->callMethodAsync("RegisterStatusNotifierItem")
      .onInterface(kWatcher)
      .withArguments(busName_)
      .uponReplyInvoke([](const sdbus::Error*) {});  // an error is a tray that isn't running yet
}

void StatusNotifierItem::Emit(const char* signal) noexcept {
  // When the bus has just gone, the item is read again as soon as it is back.
  if (object_) static_cast<void>(TryOnBus([&] { object_->emitSignal(signal).onInterface(kInterface); }));
}

}  // namespace tessaro::platform
