#include "Platform/SystemAppearance.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>

#include "Base/Lifetime.h"
#include "Platform/Linux/Base/BusNames.h"
#include "Platform/Linux/Base/BusService.h"
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
constexpr std::chrono::seconds kStartDeadline{20};

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
class Appearance final : private BusService {
 public:
  static Appearance& Shared() {
    static Forever<Appearance> appearance;
    return *appearance;
  }

  [[nodiscard]] bool IsDarkNow() {
    JoinBus();
    return portal_ ? *portal_ : IsThemeDark();
  }

  void Listen(void (*listener)()) {
    listener_ = listener;
    JoinBus();
  }

 private:
  void Appear(sdbus::IConnection& bus) override {
    settings_ = sdbus::createProxy(bus, kPortal, kPortalPath);
    settings_->uponSignal("SettingChanged")
        .onInterface(kSettings)
        .call([this](const std::string& space, const std::string& key, const sdbus::Variant& value) {
          if (space == kNamespace && key == kKey) Learn(IsDark(value));
        });
    settings_->finishRegistration();
    owner_ = WatchOwner(bus, kPortal, [this](bool hasOwner) { hasOwner ? ReadLater() : Learn(std::nullopt); });
    // A call would start the portal and wait for it.
    if (HasOwner(kPortal)) TryOnBus([this] { ReadNow(); });
  }

  void Disappear() noexcept override {
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
        .withTimeout(kStartDeadline)
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

  void (*listener_)() = nullptr;
  std::optional<bool> portal_;
  sdbus::Slot owner_;
  std::unique_ptr<sdbus::IProxy> settings_;
};

}  // namespace

bool IsDarkMode() { return Appearance::Shared().IsDarkNow(); }

void ListenForAppearanceChanges(void (*listener)()) { Appearance::Shared().Listen(listener); }

}  // namespace tessaro::platform
