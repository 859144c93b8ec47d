#pragma once

#include <string>
#include <vector>

#include "Base/Result.h"

namespace tessaro::platform {

// The default applications of a content type by the MIME applications standard, as desktop files in descending
// precedence. Some may not exist.
[[nodiscard]] std::vector<std::string> ListedDefaults(const std::string& type);

// Puts a desktop file in front of the user's list for a content type. The rest of the list stays as it is, and the file
// is replaced atomically.
[[nodiscard]] Result<void> WriteListedDefault(const std::string& type, const std::string& desktopFile);

}  // namespace tessaro::platform
