#include "Platform/StandardDirectories.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>

namespace tessaro::platform {

namespace {

// The base directory standard wants relative paths to be ignored.
std::filesystem::path AbsolutePathIn(const char* variable) {
  const char* value = std::getenv(variable);
  const std::filesystem::path path = value != nullptr ? value : "";
  return path.is_absolute() ? path : std::filesystem::path();
}

std::string AsFileName(std::string_view name) {
  std::string file(name);
  std::replace(file.begin(), file.end(), '/', '_');
  return file.empty() || file.front() == '.' ? "_" + file : file;
}

}  // namespace

std::filesystem::path HomeDirectory() {
  if (auto home = AbsolutePathIn("HOME"); !home.empty()) return home;
  const passwd* entry = getpwuid(getuid());
  return entry != nullptr && entry->pw_dir != nullptr ? entry->pw_dir : "/";
}

std::filesystem::path LogDirectory(std::string_view applicationName) {
  auto state = AbsolutePathIn("XDG_STATE_HOME");
  if (state.empty()) state = HomeDirectory() / ".local" / "state";
  return state / AsFileName(applicationName) / "logs";
}

}  // namespace tessaro::platform
