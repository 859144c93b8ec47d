#include "Platform/Linux/Base/Paths.h"

#include <dlfcn.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>

#include "Base/TextPieces.h"
#include "Platform/Files.h"
#include "Platform/Linux/Base/GLibOwners.h"
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

// ---- file: URIs

std::string PathOfFileURI(const std::string& uri) noexcept {
  char* named = nullptr;
  const GTextPtr path(g_filename_from_uri(uri.c_str(), &named, nullptr));
  const GTextPtr host(named);
  if (path == nullptr) return {};
  const bool isLocal = host == nullptr || *host.get() == '\0' || g_ascii_strcasecmp(host.get(), "localhost") == 0;
  return isLocal ? path.get() : "";
}

std::string FileURIOf(const std::string& path) noexcept {
  if (path.empty() || HasNul(path)) return {};
  const GTextPtr uri(g_filename_to_uri(AbsolutePath(path).c_str(), nullptr, nullptr));
  return uri != nullptr ? uri.get() : "";
}

std::string AbsolutePath(const std::string& path) noexcept {
  const GTextPtr absolute(g_canonicalize_filename(path.c_str(), nullptr));
  return absolute.get();
}

// ---- Aliases, which are symbolic links here

fs::path ResolveAlias(const fs::path& alias) noexcept {
  std::error_code error;
  if (!fs::is_symlink(alias, error)) return {};
  fs::path target = fs::canonical(alias, error);
  return error ? fs::path() : target;
}

Result<void> WriteAlias(const fs::path& alias, const fs::path& target) noexcept {
  std::error_code error;
  fs::create_symlink(target, alias, error);
  if (error) return Fail(error.message());
  return {};
}

}  // namespace tessaro::platform
