#include "Platform/Linux/Base/BaseDirectories.h"

#include <dlfcn.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

#include "Base/TextPieces.h"
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
  std::vector<fs::path> directories;
  for (const fs::path path : Split(value != nullptr && *value != '\0' ? value : otherwise, ':')) {
    if (path.is_absolute()) directories.push_back(path);
  }
  return directories;
}

std::string AsFileName(std::string_view name) {
  std::string file(name);
  std::replace(file.begin(), file.end(), '/', '_');
  return file.empty() || file.front() == '.' ? "_" + file : file;
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

fs::path OwnDirectory() noexcept {
  Dl_info module{};
  dladdr(reinterpret_cast<void*>(&OwnDirectory), &module);
  return fs::path(module.dli_fname).parent_path();
}

fs::path HomeDirectory() {
  if (auto home = AbsolutePathIn("HOME"); !home.empty()) return home;
  const passwd* entry = getpwuid(getuid());
  return entry != nullptr && entry->pw_dir != nullptr ? entry->pw_dir : "/";
}

fs::path LogDirectory(std::string_view applicationName) { return StateHome() / AsFileName(applicationName) / "logs"; }

fs::path CrashDirectory(std::string_view applicationName) {
  return StateHome() / AsFileName(applicationName) / "crashes";
}

}  // namespace tessaro::platform
