#include "Platform/SystemAppearance.h"

#include <sdbus-c++/sdbus-c++.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/TextPieces.h"
#include "Platform/Common/AutoreleaseScope.h"
#include "Platform/Linux/Base/SessionBus.h"
#include "Platform/Linux/Theme/DesktopLook.h"
#include "Platform/Linux/Theme/XSettings.h"

namespace tessaro::platform {

namespace {

// ---- The portal

constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
constexpr char kPath[] = "/org/freedesktop/portal/desktop";
constexpr char kSettings[] = "org.freedesktop.portal.Settings";
constexpr char kAppearance[] = "org.freedesktop.appearance";
constexpr char kInterface[] = "org.gnome.desktop.interface";
constexpr std::chrono::milliseconds kDeadline{300};
constexpr std::chrono::seconds kStartDeadline{20};

// Values that the portal lacks are missing, all of them while there is no portal.
struct PortalValues {
  enum class Scheme : std::uint32_t { NoPreference, Dark, Light };

  std::optional<Scheme> scheme;
  std::optional<std::uint32_t> accent;
  std::string font;
};

template <typename T>
std::optional<T> ValueAs(const sdbus::Variant& value) {
  // Some portals wrap a value twice.
  if (value.containsValueOfType<sdbus::Variant>()) return ValueAs<T>(value.get<sdbus::Variant>());
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

void Learn(PortalValues& values, const std::string& space, const std::string& key, const sdbus::Variant& value) {
  if (space == kAppearance && key == "color-scheme") {
    const auto scheme = ValueAs<std::uint32_t>(value);
    values.scheme = scheme ? std::optional(static_cast<PortalValues::Scheme>(*scheme)) : std::nullopt;
  }
  if (space == kAppearance && key == "accent-color") {
    const auto components = ValueAs<sdbus::Struct<double, double, double>>(value);
    values.accent = components ? ColourOf(*components) : std::nullopt;
  }
  if (space == kInterface && key == "font-name") values.font = ValueAs<std::string>(value).value_or("");
}

PortalValues ValuesOf(const std::map<std::string, std::map<std::string, sdbus::Variant>>& settings) {
  PortalValues values;
  for (const auto& [space, entries] : settings) {
    for (const auto& [key, value] : entries) Learn(values, space, key, value);
  }
  return values;
}

std::vector<std::string> Spaces() { return {kAppearance, kInterface}; }

// The desktop's look from org.freedesktop.portal.Settings.
class PortalSettings final : private BusService {
 public:
  // `changed` is called when a value has another value. The portal that runs now is waited for, with a deadline.
  explicit PortalSettings(std::function<void()> changed) : changed_(std::move(changed)) { JoinBus(); }

  ~PortalSettings() { LeaveBus(); }

  [[nodiscard]] const PortalValues& values() const { return values_; }

 private:
  using Settings = std::map<std::string, std::map<std::string, sdbus::Variant>>;

  void Appear(sdbus::IConnection& bus) override {
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

  void Disappear() noexcept override {
    owner_.reset();
    settings_.reset();
    Replace({});
  }

  void ReadNow() {
    Settings settings;
    settings_->callMethod("ReadAll")
        .onInterface(kSettings)
        .withTimeout(kDeadline)
        .withArguments(Spaces())
        .storeResultsTo(settings);
    values_ = ValuesOf(settings);
  }

  void ReadLater() {
    settings_->callMethodAsync("ReadAll")
        .onInterface(kSettings)
        .withTimeout(kStartDeadline)
        .withArguments(Spaces())
        .uponReplyInvoke([this](const sdbus::Error* error, const Settings& settings) {
          if (error == nullptr) Replace(ValuesOf(settings));
        });
  }

  void Replace(PortalValues values) {
    values_ = std::move(values);
    changed_();
  }

  std::function<void()> changed_;
  PortalValues values_;
  sdbus::Slot owner_;
  std::unique_ptr<sdbus::IProxy> settings_;
};

// ---- The appearance

constexpr double kUnscaledDPI = 96;
constexpr double kSmallestScale = 0.5;
constexpr double kLargestScale = 4;

bool IsNameDark(std::string_view name) {
  const std::string theme = LowerCase(name);
  return theme.ends_with(":dark") || theme.ends_with("-dark");
}

// The look as the settings portal, the X session's settings daemon and the environment have it.
class Appearance {
 public:
  static Appearance& Shared() {
    static Forever<Appearance> appearance;
    return *appearance;
  }

  [[nodiscard]] bool IsDark() const {
    using Scheme = PortalValues::Scheme;
    const auto scheme = portal_.values().scheme;
    if (scheme == Scheme::Dark || scheme == Scheme::Light) return scheme == Scheme::Dark;
    const char* variable = scheme ? nullptr : std::getenv("GTK_THEME");
    return IsNameDark(variable != nullptr ? variable : session_.Text("Net/ThemeName"));
  }

  [[nodiscard]] DesktopLook Look() const {
    DesktopLook look;
    look.isDark = IsDark();
    look.accent = portal_.values().accent.value_or(look.accent);
    look.font = session_.Text("Gtk/FontName");
    if (look.font.empty()) look.font = portal_.values().font;
    look.scale = Scale();
    return look;
  }

  void Listen(std::function<void(const DesktopLook&)> listener) {
    listeners_.push_back(std::move(listener));
    last_ = Look();
  }

 private:
  // Desktops express both the scale of the display and that of texts as a resolution.
  [[nodiscard]] double Scale() const {
    constexpr double kFraction = 1024;
    double dpi = session_.Number("Xft/DPI") / kFraction;
    if (dpi <= 0) dpi = session_.ResourceDPI();
    return dpi > 0 ? std::clamp(dpi / kUnscaledDPI, kSmallestScale, kLargestScale) : 0;
  }

  void Changed() {
    if (listeners_.empty()) return;
    const DesktopLook look = Look();
    if (look == std::exchange(last_, look)) return;
    // A change of the X session's settings comes from the event loop, which has no pool.
    WithAutoreleasePool([&] {
      for (const auto& listener : listeners_) listener(look);
    });
  }

  // The members call back while they are made.
  std::vector<std::function<void(const DesktopLook&)>> listeners_;
  DesktopLook last_;
  PortalSettings portal_{[this] { Changed(); }};
  XSettings session_{[this] { Changed(); }};
};

}  // namespace

bool IsDarkMode() { return Appearance::Shared().IsDark(); }

DesktopLook CurrentLook() { return Appearance::Shared().Look(); }

void ListenForLookChanges(std::function<void(const DesktopLook&)> listener) {
  Appearance::Shared().Listen(std::move(listener));
}

}  // namespace tessaro::platform
