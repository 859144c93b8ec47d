#include "Platform/StandardDirectories.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

// The places that macOS names for them, from the password database: HOME may be another's under sudo. Any thread.
namespace tessaro::platform {

std::filesystem::path HomeDirectory() {
  const passwd* user = getpwuid(getuid());
  if (user != nullptr && user->pw_dir != nullptr && *user->pw_dir != '\0') return user->pw_dir;
  const char* home = std::getenv("HOME");
  return home != nullptr && *home != '\0' ? home : "/";
}

std::filesystem::path LogDirectory(std::string_view applicationName) {
  return HomeDirectory() / "Library/Logs" / applicationName;
}

std::filesystem::path CrashDirectory(std::string_view applicationName) {
  return HomeDirectory() / "Library/Application Support" / applicationName / "Crashes";
}

}  // namespace tessaro::platform
