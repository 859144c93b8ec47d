#include "Platform/SystemAppearance.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>

#include "Base/Lifetime.h"
#include "Platform/Linux/Base/BusNames.h"
#include "Platform/Linux/Base/SessionBus.h"
#include "Platform/Linux/Desktop/AppearanceChanges.h"

namespace tessaro::platform {

namespace {

constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
constexpr char kPortalPath[] = "/org/freedesktop/portal/desktop";
constexpr char kSettings[] = "org.freedesktop.portal.Settings";
constexpr char kNamespace[] = "org.freedesktop.appearance";
constexpr char kKey[] = "color-scheme";
constexpr std::uint32_t kPreferDark = 1;
constexpr std::chrono::milliseconds kDeadline{300};

bool IsThemeDark() {
  const char* variable = std::getenv("GTK_THEME");
  std::string theme = variable != nullptr ? variable : "";
  std::transform(theme.begin(), theme.end(), theme.begin(), [](unsigned char c) { return std::tolower(c); });
  return theme.ends_with(":dark") || theme.ends_with("-dark");
}

// Read() wraps the value in two variants, SettingChanged in one.
std::optional<bool> IsDark(const sdbus::Variant& value) {
  if (value.containsValueOfType<sdbus::Variant>()) return IsDark(value.get<sdbus::Variant>());
  if (!value.containsValueOfType<std::uint32_t>()) return std::nullopt;
  return value.get<std::uint32_t>() == kPreferDark;
}

// The setting of the desktop's portal, kept up to date by its signals.
class Appearance {
 public:
  static Appearance& Shared() {
    static Forever<Appearance> appearance;
    return *appearance;
  }

  [[nodiscard]] bool IsDarkNow() {
    if (!isListening_) {
      isListening_ = true;
      subscription_ = bus_.Listen({[this] { Follow(); }, [this] { Forget(); }});
    }
    return portal_ ? *portal_ : IsThemeDark();
  }

  void Listen(void (*listener)()) {
    listener_ = listener;
    static_cast<void>(IsDarkNow());
  }

 private:
  void Follow() {
    try {
      auto& bus = *bus_.Connection();
      const std::string fromPortal = std::string("type='signal',sender='") + kPortal + "',path='" + kPortalPath + "'";
      changes_ =
          bus.addMatch(fromPortal + ",interface='" + kSettings + "',member='SettingChanged',arg0='" + kNamespace + "'",
                       [this](sdbus::Message& message) { Changed(message); });
      owner_ = WatchOwner(bus, kPortal, [this](bool hasOwner) { hasOwner ? ReadLater() : Learn(std::nullopt); });
      settings_ = sdbus::createProxy(bus, kPortal, kPortalPath);
      // A call would start the portal and wait for it.
      if (HasOwner(kPortal)) ReadNow();
    } catch (const sdbus::Error&) {
      portal_.reset();
    }
  }

  void Forget() {
    changes_.reset();
    owner_.reset();
    settings_.reset();
    portal_.reset();
  }

  void ReadNow() {
    sdbus::Variant value;
    settings_->callMethod("Read")
        .onInterface(kSettings)
        .withTimeout(kDeadline)
        .withArguments(std::string(kNamespace), std::string(kKey))
        .storeResultsTo(value);
    portal_ = IsDark(value);
  }

  void ReadLater() {
    settings_->callMethodAsync("Read")
        .onInterface(kSettings)
        .withArguments(std::string(kNamespace), std::string(kKey))
        .uponReplyInvoke([this](const sdbus::Error* error, const sdbus::Variant& value) {
          if (error == nullptr) Learn(IsDark(value));
        });
  }

  void Learn(std::optional<bool> answer) {
    const bool wasDark = IsDarkNow();
    portal_ = answer;
    if (listener_ != nullptr && IsDarkNow() != wasDark) listener_();
  }

  void Changed(sdbus::Message& message) {
    std::string settingsNamespace;
    std::string key;
    sdbus::Variant value;
    message >> settingsNamespace >> key >> value;
    if (key == kKey) Learn(IsDark(value));
  }

  SessionBus& bus_ = SessionBus::Shared();
  bool isListening_ = false;
  void (*listener_)() = nullptr;
  std::optional<bool> portal_;
  sdbus::Slot changes_;
  sdbus::Slot owner_;
  std::unique_ptr<sdbus::IProxy> settings_;
  SessionBus::Subscription subscription_;
};

}  // namespace

bool IsDarkMode() { return Appearance::Shared().IsDarkNow(); }

void ListenForAppearanceChanges(void (*listener)()) { Appearance::Shared().Listen(listener); }

}  // namespace tessaro::platform
