#include "Platform/StandardDirectories.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "Platform/Linux/Base/BaseDirectories.h"

namespace tessaro::platform {

namespace {

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
  return StateHome() / AsFileName(applicationName) / "logs";
}

std::filesystem::path CrashDirectory(std::string_view applicationName) {
  return StateHome() / AsFileName(applicationName) / "crashes";
}

}  // namespace tessaro::platform
