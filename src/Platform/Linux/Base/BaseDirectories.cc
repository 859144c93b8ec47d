#include "Platform/Linux/Base/BaseDirectories.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

#include "Platform/StandardDirectories.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

fs::path PathIn(const char* variable, const fs::path& belowHome) {
  fs::path path = AbsolutePathIn(variable);
  return path.empty() ? HomeDirectory() / belowHome : path;
}

std::vector<fs::path> PathsIn(const char* variable, std::string_view otherwise) {
  const char* value = std::getenv(variable);
  std::string_view list = value != nullptr && *value != '\0' ? value : otherwise;
  std::vector<fs::path> directories;
  while (!list.empty()) {
    const auto end = std::min(list.find(':'), list.size());
    if (const fs::path path = list.substr(0, end); path.is_absolute()) directories.push_back(path);
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return directories;
}

}  // namespace

fs::path AbsolutePathIn(const char* variable) {
  const char* value = std::getenv(variable);
  const fs::path path = value != nullptr ? value : "";
  return path.is_absolute() ? path : fs::path();
}

fs::path ConfigHome() { return PathIn("XDG_CONFIG_HOME", ".config"); }

fs::path StateHome() { return PathIn("XDG_STATE_HOME", ".local/state"); }

fs::path DataHome() { return PathIn("XDG_DATA_HOME", ".local/share"); }

std::vector<fs::path> ConfigDirectories() { return PathsIn("XDG_CONFIG_DIRS", "/etc/xdg"); }

std::vector<fs::path> DataDirectories() { return PathsIn("XDG_DATA_DIRS", "/usr/local/share:/usr/share"); }

}  // namespace tessaro::platform
