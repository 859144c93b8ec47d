#include "Platform/SystemAppearance.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "Base/Lifetime.h"
#include "Platform/Common/AutoreleaseScope.h"
#include "Platform/Linux/Desktop/DesktopLook.h"
#include "Platform/Linux/Desktop/PortalSettings.h"
#include "Platform/Linux/Desktop/XSettings.h"

namespace tessaro::platform {

namespace {

constexpr double kUnscaledDPI = 96;
constexpr double kSmallestScale = 0.5;
constexpr double kLargestScale = 4;

bool IsNameDark(std::string theme) {
  std::transform(theme.begin(), theme.end(), theme.begin(), [](unsigned char c) { return std::tolower(c); });
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
    using Scheme = PortalSettings::Values::Scheme;
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
