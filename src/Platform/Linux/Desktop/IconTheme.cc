#include "Platform/Linux/Desktop/IconTheme.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <system_error>
#include <utility>
#include <vector>

#include "Base/Lifetime.h"
#include "Platform/Linux/Base/BaseDirectories.h"
#include "Platform/Linux/Base/GLibOwners.h"
#include "Platform/StandardDirectories.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

struct SizedFolder {
  std::string name;
  int least = 0;
  int most = 0;
};

struct Theme {
  std::vector<SizedFolder> folders;
  std::vector<std::string> parents;
};

std::vector<fs::path> Bases() {
  std::vector<fs::path> bases = {DataHome() / "icons", HomeDirectory() / ".icons"};
  for (const fs::path& directory : DataDirectories()) bases.push_back(directory / "icons");
  return bases;
}

bool IsFile(const fs::path& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

int Number(GKeyFile* keys, const std::string& group, const char* key, int otherwise) {
  GError* raised = nullptr;
  const int value = g_key_file_get_integer(keys, group.c_str(), key, &raised);
  const GErrorPtr error(raised);
  return error ? otherwise : value;
}

SizedFolder FolderOf(GKeyFile* keys, const std::string& name) {
  const int size = Number(keys, name, "Size", 0);
  const GTextPtr kind(g_key_file_get_string(keys, name.c_str(), "Type", nullptr));
  const std::string type = kind != nullptr ? kind.get() : "Threshold";
  if (type == "Fixed") return {name, size, size};
  if (type == "Scalable") return {name, Number(keys, name, "MinSize", size), Number(keys, name, "MaxSize", size)};
  const int threshold = Number(keys, name, "Threshold", 2);
  return {name, size - threshold, size + threshold};
}

std::vector<std::string> Texts(GKeyFile* keys, const char* key) {
  g_key_file_set_list_separator(keys, ',');
  const GStringListPtr list(g_key_file_get_string_list(keys, "Icon Theme", key, nullptr, nullptr));
  std::vector<std::string> texts;
  for (char** each = list.get(); each != nullptr && *each != nullptr; ++each) texts.emplace_back(g_strstrip(*each));
  return texts;
}

Theme ReadTheme(const std::string& name) {
  Theme theme;
  for (const fs::path& base : Bases()) {
    const fs::path index = base / name / "index.theme";
    const GKeyFilePtr keys(g_key_file_new());
    if (!IsFile(index) || !g_key_file_load_from_file(keys.get(), index.c_str(), G_KEY_FILE_NONE, nullptr)) continue;
    for (const std::string& folder : Texts(keys.get(), "Directories")) {
      theme.folders.push_back(FolderOf(keys.get(), folder));
    }
    theme.parents = Texts(keys.get(), "Inherits");
    break;
  }
  return theme;
}

// The theme of GTK's settings file: the desktop's own setting would need a connection to its daemon.
std::string ChosenTheme() {
  const GKeyFilePtr keys(g_key_file_new());
  const fs::path file = ConfigHome() / "gtk-3.0" / "settings.ini";
  if (!IsFile(file) || !g_key_file_load_from_file(keys.get(), file.c_str(), G_KEY_FILE_NONE, nullptr)) return {};
  const GTextPtr name(g_key_file_get_string(keys.get(), "Settings", "gtk-icon-theme-name", nullptr));
  return name != nullptr && std::string_view(name.get()).find('/') == std::string_view::npos ? name.get() : "";
}

using NamedThemes = std::vector<std::pair<std::string, Theme>>;

void AddTheme(NamedThemes& themes, const std::string& name) {
  const auto isKnown = [&](const auto& each) { return each.first == name; };
  if (name.empty() || std::any_of(themes.begin(), themes.end(), isKnown)) return;
  themes.emplace_back(name, ReadTheme(name));
}

NamedThemes ReadThemes() {
  NamedThemes themes;
  AddTheme(themes, ChosenTheme());
  for (std::size_t i = 0; i < themes.size(); ++i) {
    const auto parents = themes[i].second.parents;
    for (const std::string& parent : parents) {
      if (parent != "hicolor") AddTheme(themes, parent);
    }
  }
  AddTheme(themes, "Adwaita");
  AddTheme(themes, "hicolor");
  return themes;
}

// The themes to search, in order. Read once: they rarely change and have hundreds of folders.
const NamedThemes& Themes() {
  static Forever<NamedThemes> themes(ReadThemes());
  return *themes;
}

// Smaller is better. Enlarging an icon is worse than shrinking one.
int Misfit(const SizedFolder& folder, int size) {
  if (folder.most < size) return 10000 + size - folder.most;
  return std::max(folder.least - size, 0);
}

fs::path FileIn(const fs::path& folder, const std::string& name) {
  for (const char* extension : {".png", ".svg"}) {
    if (fs::path file = folder / (name + extension); IsFile(file)) return file;
  }
  return {};
}

fs::path FileOf(const std::string& themeName, const Theme& theme, const std::string& name, int size) {
  fs::path best;
  int least = std::numeric_limits<int>::max();
  for (const fs::path& base : Bases()) {
    std::error_code error;
    if (!fs::is_directory(base / themeName, error)) continue;
    for (const SizedFolder& folder : theme.folders) {
      const int misfit = Misfit(folder, size);
      if (misfit >= least) continue;
      fs::path file = FileIn(base / themeName / folder.name, name);
      if (file.empty()) continue;
      best = std::move(file);
      least = misfit;
    }
  }
  return best;
}

}  // namespace

fs::path ThemedIcon(const std::string& name, int size) {
  if (name.empty() || name.find('/') != std::string::npos) return {};
  for (const auto& [themeName, theme] : Themes()) {
    if (fs::path file = FileOf(themeName, theme, name, size); !file.empty()) return file;
  }
  for (const fs::path& directory : DataDirectories()) {
    if (fs::path file = FileIn(directory / "pixmaps", name); !file.empty()) return file;
  }
  return {};
}

}  // namespace tessaro::platform
