#pragma once

#include <string>

#include "Base/Result.h"

// The programs that the session starts at login. Paths are absolute, texts UTF-8. Any thread; nothing throws.
namespace tessaro::platform {

struct LoginApplication {
  std::string bundlePath;
  std::string executablePath;
  std::string displayName;
};

// Whether the next login will start `application`. False where the session has no such list.
[[nodiscard]] bool StartsAtLogin(const LoginApplication& application) noexcept;

// Leaves the list alone when nothing has to change. An item that is switched off is switched on again.
[[nodiscard]] Result<void> SetStartsAtLogin(const LoginApplication& application, bool starts) noexcept;

// Removes the first active item of that name, if the system lets its items be listed.
[[nodiscard]] Result<void> RemoveLoginItemNamed(const std::string& displayName) noexcept;

}  // namespace tessaro::platform
