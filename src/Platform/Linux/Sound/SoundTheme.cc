#include "Platform/Linux/Sound/SoundTheme.h"

#include <algorithm>
#include <string>
#include <system_error>

#include "Platform/Linux/Base/KeyFiles.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

// The root of every theme's inheritance.
constexpr char kBasicTheme[] = "freedesktop";
constexpr char kThemeGroup[] = "Sound Theme";

std::vector<fs::path> Folders(const char* own, const char* const* others) {
  std::vector<fs::path> folders = {own};
  for (; *others != nullptr; ++others) folders.emplace_back(*others);
  return folders;
}

// Desktops write the setting here for programs without a settings daemon.
std::string ChosenTheme() {
  for (const fs::path& folder : Folders(g_get_user_config_dir(), g_get_system_config_dirs())) {
    const GKeyFilePtr keys = ReadKeyFile(folder / "gtk-3.0" / "settings.ini");
    if (!keys) continue;
    const GTextPtr name(g_key_file_get_string(keys.get(), "Settings", "gtk-sound-theme-name", nullptr));
    if (name) return name.get();
  }
  return kBasicTheme;
}

void AddTheme(const std::string& theme, std::vector<std::string>& seen, std::vector<fs::path>& found) {
  if (theme.empty() || theme.find('/') != std::string::npos) return;
  if (std::find(seen.begin(), seen.end(), theme) != seen.end()) return;
  seen.push_back(theme);
  std::vector<std::string> parents;
  for (const fs::path& data : Folders(g_get_user_data_dir(), g_get_system_data_dirs())) {
    const fs::path folder = data / "sounds" / theme;
    const GKeyFilePtr index = ReadKeyFile(folder / "index.theme");
    if (!index) continue;
    g_key_file_set_list_separator(index.get(), ',');
    for (const std::string& each : ListIn(index.get(), kThemeGroup, "Directories")) found.push_back(folder / each);
    if (parents.empty()) parents = ListIn(index.get(), kThemeGroup, "Inherits");
  }
  for (const std::string& parent : parents) AddTheme(parent, seen, found);
}

}  // namespace

std::vector<fs::path> SoundThemeFolders() {
  std::vector<std::string> seen;
  std::vector<fs::path> found;
  AddTheme(ChosenTheme(), seen, found);
  AddTheme(kBasicTheme, seen, found);
  return found;
}

}  // namespace tessaro::platform
