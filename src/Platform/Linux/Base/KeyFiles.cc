#include "Platform/Linux/Base/KeyFiles.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "Platform/Files.h"
#include "Platform/Linux/Base/Paths.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestFile = 1 << 20;

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

GKeyFilePtr ReadKeyFile(const fs::path& file) {
  const auto text = ReadFile(file, kLongestFile);
  if (!text) return nullptr;
  constexpr auto kEverything = static_cast<GKeyFileFlags>(G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS);
  GKeyFilePtr keys(g_key_file_new());
  if (!g_key_file_load_from_data(keys.get(), text->data(), text->size(), kEverything, nullptr)) return nullptr;
  return keys;
}

Result<void> WriteKeyFile(const fs::path& file, GKeyFile* keys) {
  std::error_code error;
  fs::create_directories(file.parent_path(), error);
  gsize length = 0;
  const GTextPtr text(g_key_file_to_data(keys, &length, nullptr));
  auto written = ReplaceFile(file, {text.get(), length}, NewFile::AsUsual);
  if (!written) return Fail(written.error().code, file.native() + ": " + written.error().message);
  return {};
}

std::string TextIn(GKeyFile* keys, const char* group, const char* key) {
  const GTextPtr text(g_key_file_get_string(keys, group, key, nullptr));
  return text != nullptr ? text.get() : "";
}

std::vector<std::string> ListIn(GKeyFile* keys, const char* group, const char* key) {
  return TextsOf(GStringListPtr(g_key_file_get_string_list(keys, group, key, nullptr, nullptr)));
}

std::vector<std::string> TextsOf(const GStringListPtr& list) {
  std::vector<std::string> texts;
  for (char** each = list.get(); each != nullptr && *each != nullptr; ++each) texts.emplace_back(g_strstrip(*each));
  return texts;
}

std::vector<std::string> CurrentDesktops() {
  const char* desktops = g_getenv("XDG_CURRENT_DESKTOP");
  return TextsOf(GStringListPtr(g_strsplit(desktops != nullptr ? desktops : "", ":", 0)));
}

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
