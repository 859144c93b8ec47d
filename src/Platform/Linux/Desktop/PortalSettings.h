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

// What org.freedesktop.portal.Settings says about the desktop's look. A value is missing while there is no portal, and
// where the portal does not know it. Main thread only.
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
