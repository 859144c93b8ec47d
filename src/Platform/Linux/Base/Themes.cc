#include "Platform/Linux/Base/Themes.h"

#include <algorithm>
#include <utility>

#include "Platform/Linux/Base/BaseDirectories.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

// The settings file of GTK, where desktops write the choice for programs without a connection to their daemon.
std::string ChosenTheme(const char* setting) {
  std::vector<fs::path> folders = ConfigDirectories();
  folders.insert(folders.begin(), ConfigHome());
  for (const fs::path& folder : folders) {
    const GKeyFilePtr keys = ReadKeyFile(folder / "gtk-3.0" / "settings.ini");
    std::string theme = keys ? TextIn(keys.get(), "Settings", setting) : "";
    if (!theme.empty()) return theme;
  }
  return {};
}

void AddTheme(std::vector<Theme>& themes, const std::string& name, const ThemeKind& kind) {
  const auto isKnown = [&](const Theme& each) { return each.name == name; };
  if (name.empty() || name.find('/') != std::string::npos || std::any_of(themes.begin(), themes.end(), isKnown)) return;
  Theme theme{name, {}};
  for (const fs::path& base : kind.bases) {
    GKeyFilePtr index = ReadKeyFile(base / name / "index.theme");
    if (!index) continue;
    g_key_file_set_list_separator(index.get(), ',');
    theme.parts.push_back({base / name, std::move(index)});
  }
  themes.push_back(std::move(theme));
}

}  // namespace

std::vector<Theme> ReadThemes(const ThemeKind& kind) {
  std::vector<Theme> themes;
  AddTheme(themes, ChosenTheme(kind.setting), kind);
  for (std::size_t i = 0; i < themes.size(); ++i) {
    if (themes[i].parts.empty()) continue;
    for (const std::string& parent : ListIn(themes[i].parts.front().index.get(), kind.group, "Inherits")) {
      if (parent != kind.fallbacks.back()) AddTheme(themes, parent, kind);
    }
  }
  for (const std::string& fallback : kind.fallbacks) AddTheme(themes, fallback, kind);
  return themes;
}

}  // namespace tessaro::platform
