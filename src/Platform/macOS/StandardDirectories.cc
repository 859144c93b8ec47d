#include "Platform/StandardDirectories.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

// The places that macOS has for them, below HOME, or below what the password database says. Any thread.
namespace tessaro::platform {

std::filesystem::path HomeDirectory() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home == '/') return home;
  const passwd* user = getpwuid(getuid());
  return user != nullptr && user->pw_dir != nullptr && *user->pw_dir == '/' ? user->pw_dir : "/";
}

std::filesystem::path LogDirectory(std::string_view applicationName) {
  return HomeDirectory() / "Library/Logs" / applicationName;
}

std::filesystem::path CrashDirectory(std::string_view applicationName) {
  return HomeDirectory() / "Library/Application Support" / applicationName / "Crashes";
}

}  // namespace tessaro::platform
