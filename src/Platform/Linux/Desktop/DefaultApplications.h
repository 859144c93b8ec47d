#pragma once

#include <string>
#include <vector>

namespace tessaro::platform {

// The desktop files that the lists of the MIME applications standard name as default for a content type, the most
// important one first. Not all of them need exist.
[[nodiscard]] std::vector<std::string> ListedDefaults(const std::string& type);

// Puts a desktop file in front of the user's list for a content type. Whatever else is in it stays as it is, and the
// file is replaced at once and completely, or not at all.
[[nodiscard]] bool WriteListedDefault(const std::string& type, const std::string& desktopFile);

}  // namespace tessaro::platform
