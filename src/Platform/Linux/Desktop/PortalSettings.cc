#include "Platform/Linux/Desktop/PortalSettings.h"

#include <chrono>
#include <cmath>
#include <utility>
#include <vector>

#include "Platform/Linux/Base/BusNames.h"

namespace tessaro::platform {

namespace {

constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
constexpr char kPath[] = "/org/freedesktop/portal/desktop";
constexpr char kSettings[] = "org.freedesktop.portal.Settings";
constexpr char kAppearance[] = "org.freedesktop.appearance";
constexpr char kInterface[] = "org.gnome.desktop.interface";
constexpr std::chrono::milliseconds kDeadline{300};
constexpr std::chrono::seconds kStartDeadline{20};

template <typename T>
std::optional<T> As(const sdbus::Variant& value) {
  // Some portals wrap a value twice.
  if (value.containsValueOfType<sdbus::Variant>()) return As<T>(value.get<sdbus::Variant>());
  return value.containsValueOfType<T>() ? std::optional(value.get<T>()) : std::nullopt;
}

// Components outside of 0…1 mean that there is no accent.
std::optional<std::uint32_t> ColourOf(const sdbus::Struct<double, double, double>& components) {
  std::uint32_t rgb = 0;
  for (const double each : {std::get<0>(components), std::get<1>(components), std::get<2>(components)}) {
    if (!(each >= 0 && each <= 1)) return std::nullopt;
    rgb = rgb << 8 | static_cast<std::uint32_t>(std::lround(each * 255));
  }
  return rgb;
}

void Learn(PortalSettings::Values& values, const std::string& space, const std::string& key,
           const sdbus::Variant& value) {
  if (space == kAppearance && key == "color-scheme") {
    const auto scheme = As<std::uint32_t>(value);
    values.scheme = scheme ? std::optional(static_cast<PortalSettings::Values::Scheme>(*scheme)) : std::nullopt;
  }
  if (space == kAppearance && key == "accent-color") {
    const auto components = As<sdbus::Struct<double, double, double>>(value);
    values.accent = components ? ColourOf(*components) : std::nullopt;
  }
  if (space == kInterface && key == "font-name") values.font = As<std::string>(value).value_or("");
}

PortalSettings::Values ValuesOf(const std::map<std::string, std::map<std::string, sdbus::Variant>>& settings) {
  PortalSettings::Values values;
  for (const auto& [space, entries] : settings) {
    for (const auto& [key, value] : entries) Learn(values, space, key, value);
  }
  return values;
}

const std::vector<std::string>& Spaces() {
  static const auto& spaces = *new std::vector<std::string>{kAppearance, kInterface};
  return spaces;
}

}  // namespace

PortalSettings::PortalSettings(std::function<void()> changed) : changed_(std::move(changed)) { JoinBus(); }

void PortalSettings::Appear(sdbus::IConnection& bus) {
  settings_ = sdbus::createProxy(bus, kPortal, kPath);
  settings_->uponSignal("SettingChanged")
      .onInterface(kSettings)
      .call([this](const std::string& space, const std::string& key, const sdbus::Variant& value) {
        Learn(values_, space, key, value);
        changed_();
      });
  settings_->finishRegistration();
  owner_ = WatchOwner(bus, kPortal, [this](bool hasOwner) { hasOwner ? ReadLater() : Replace({}); });
  // A call would start the portal and wait for it.
  if (HasOwner(kPortal)) static_cast<void>(TryOnBus([this] { ReadNow(); }));
}

void PortalSettings::Disappear() noexcept {
  owner_.reset();
  settings_.reset();
  Replace({});
}

void PortalSettings::ReadNow() {
  Settings settings;
  settings_->callMethod("ReadAll").onInterface(kSettings).withTimeout(kDeadline).withArguments(Spaces()).storeResultsTo(
      settings);
  values_ = ValuesOf(settings);
}

void PortalSettings::ReadLater() {
  settings_->callMethodAsync("ReadAll")
      .onInterface(kSettings)
      .withTimeout(kStartDeadline)
      .withArguments(Spaces())
      .uponReplyInvoke([this](const sdbus::Error* error, const Settings& settings) {
        if (error == nullptr) Replace(ValuesOf(settings));
      });
}

void PortalSettings::Replace(Values values) {
  values_ = std::move(values);
  changed_();
}

}  // namespace tessaro::platform
