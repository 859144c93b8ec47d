#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tessaro::platform {

// What the session is to start, and how people know it. Absolute paths, UTF-8.
struct LoginApplication {
  std::string bundlePath;
  std::string executablePath;
  std::string displayName;
};

struct LoginItem {
  std::string reference;
  std::string application;  // resolved path of what is started
  std::string displayName;
};

// What the session starts at login, in the order of its list, without items that are switched off, meant for other
// desktops, or lead nowhere. Nothing when there can't be such a list. Nothing of this throws; any thread.
[[nodiscard]] std::optional<std::vector<LoginItem>> LoginItems() noexcept;

[[nodiscard]] bool Starts(const LoginItem& item, const LoginApplication& application) noexcept;

// Whether the session is going to start `application`. An item of it that is switched off is switched on again, and
// otherwise left as it is.
bool InsertLoginItem(const LoginApplication& application) noexcept;

bool RemoveLoginItem(const LoginItem& item) noexcept;

}  // namespace tessaro::platform
