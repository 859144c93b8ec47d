#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <variant>

#include "Base/UvHandle.h"
#include "Platform/Linux/Base/XConnection.h"

namespace tessaro::platform {

// The settings that the X session's settings daemon publishes (XSETTINGS), and the X server's resource Xft.dpi. All are
// missing without a display. Lives as long as the process. Main thread only.
class XSettings {
 public:
  using Values = std::map<std::string, std::variant<std::int32_t, std::string>, std::less<>>;

  // `changed` is called when a daemon has published its settings again, or has ended.
  explicit XSettings(std::function<void()> changed);

  [[nodiscard]] std::string Text(std::string_view name) const;
  // 0 where there is no such number.
  [[nodiscard]] std::int32_t Number(std::string_view name) const;
  // Dots per inch that the resources ask for; 0 where they don't.
  [[nodiscard]] double ResourceDPI() const { return resourceDPI_; }

  // The settings of a daemon's property. Damaged ones end where the damage is.
  [[nodiscard]] static Values Parse(std::string_view property);

 private:
  void ReadEvents();
  void Load();
  [[nodiscard]] bool IsOfInterest(const xcb_generic_event_t& event) const;
  [[nodiscard]] std::string Property(xcb_window_t window, xcb_atom_t name);

  std::function<void()> changed_;
  XConnection connection_;
  xcb_window_t root_ = XCB_NONE;
  xcb_window_t manager_ = XCB_NONE;
  Values values_;
  double resourceDPI_ = 0;
  UvHandle<uv_poll_t> poll_;
};

}  // namespace tessaro::platform
