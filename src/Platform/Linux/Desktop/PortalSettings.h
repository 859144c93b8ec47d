#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Linux/Base/BusService.h"

namespace tessaro::platform {

// The desktop's look from org.freedesktop.portal.Settings. Values that the portal lacks are missing, all of them while
// there is no portal. Main thread only.
class PortalSettings final : private BusService {
 public:
  struct Values {
    enum class Scheme : std::uint32_t { NoPreference, Dark, Light };

    std::optional<Scheme> scheme;
    std::optional<std::uint32_t> accent;
    std::string font;
  };

  // `changed` is called when a value has another value. The portal that runs now is waited for, with a deadline.
  explicit PortalSettings(std::function<void()> changed);
  ~PortalSettings() { LeaveBus(); }

  [[nodiscard]] const Values& values() const { return values_; }

 private:
  using Settings = std::map<std::string, std::map<std::string, sdbus::Variant>>;

  void Appear(sdbus::IConnection& bus) override;
  void Disappear() noexcept override;
  void ReadNow();
  void ReadLater();
  void Replace(Values values);

  std::function<void()> changed_;
  Values values_;
  sdbus::Slot owner_;
  std::unique_ptr<sdbus::IProxy> settings_;
};

}  // namespace tessaro::platform
