#include "Platform/Linux/Desktop/DefaultApplications.h"

#include <filesystem>
#include <system_error>

#include "Platform/FileWriting.h"
#include "Platform/Linux/Base/BaseDirectories.h"
#include "Platform/Linux/Base/GLibOwners.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr char kFile[] = "mimeapps.list";
constexpr char kDefaults[] = "Default Applications";
// Reading blocks script: refuse absurd files.
constexpr std::uintmax_t kLongestFile = 4 << 20;

enum class List { Missing, Readable, Unreadable };

List Load(const fs::path& file, GKeyFile* keys) {
  std::error_code error;
  if (!fs::exists(file, error)) return error ? List::Unreadable : List::Missing;
  if (!fs::is_regular_file(file, error) || fs::file_size(file, error) > kLongestFile || error) return List::Unreadable;
  constexpr auto kEverything = static_cast<GKeyFileFlags>(G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS);
  return g_key_file_load_from_file(keys, file.c_str(), kEverything, nullptr) ? List::Readable : List::Unreadable;
}

// A desktop may have lists of its own, which take precedence: "gnome-mimeapps.list".
std::vector<std::string> FileNames() {
  std::vector<std::string> names;
  const char* desktops = g_getenv("XDG_CURRENT_DESKTOP");
  const GStringListPtr each(g_strsplit(desktops != nullptr ? desktops : "", ":", 0));
  for (char** desktop = each.get(); *desktop != nullptr; ++desktop) {
    const GTextPtr lower(g_ascii_strdown(*desktop, -1));
    if (lower.get()[0] != '\0') names.push_back(std::string(lower.get()) + '-' + kFile);
  }
  names.push_back(kFile);
  return names;
}

std::vector<fs::path> Files() {
  std::vector<fs::path> folders = {ConfigHome()};
  for (const fs::path& directory : ConfigDirectories()) folders.push_back(directory);
  folders.push_back(DataHome() / "applications");
  for (const fs::path& directory : DataDirectories()) folders.push_back(directory / "applications");
  const auto names = FileNames();
  std::vector<fs::path> files;
  for (const fs::path& folder : folders) {
    for (const std::string& name : names) files.push_back(folder / name);
  }
  return files;
}

std::vector<std::string> Entries(GKeyFile* keys, const std::string& type) {
  const GStringListPtr list(g_key_file_get_string_list(keys, kDefaults, type.c_str(), nullptr, nullptr));
  std::vector<std::string> entries;
  for (char** each = list.get(); each != nullptr && *each != nullptr; ++each) entries.emplace_back(*each);
  return entries;
}

// Write to the file that lookups read first, or the choice would be shadowed.
fs::path UserFile(const std::string& type) {
  for (const std::string& name : FileNames()) {
    const GKeyFilePtr keys(g_key_file_new());
    fs::path file = ConfigHome() / name;
    if (Load(file, keys.get()) == List::Readable && !Entries(keys.get(), type).empty()) return file;
  }
  return ConfigHome() / kFile;
}

}  // namespace

std::vector<std::string> ListedDefaults(const std::string& type) {
  std::vector<std::string> defaults;
  for (const fs::path& file : Files()) {
    const GKeyFilePtr keys(g_key_file_new());
    if (Load(file, keys.get()) != List::Readable) continue;
    for (std::string& entry : Entries(keys.get(), type)) defaults.push_back(std::move(entry));
  }
  return defaults;
}

Result<void> WriteListedDefault(const std::string& type, const std::string& desktopFile) {
  std::error_code error;
  const fs::path file = UserFile(type);
  const GKeyFilePtr keys(g_key_file_new());
  // Don't overwrite a list that can't be parsed: the user may have written it.
  if (Load(file, keys.get()) == List::Unreadable) return Fail(file.native() + " can't be parsed");
  std::string list = desktopFile + ';';
  for (const std::string& entry : Entries(keys.get(), type)) {
    if (entry != desktopFile) list += entry + ';';
  }
  g_key_file_set_value(keys.get(), kDefaults, type.c_str(), list.c_str());
  fs::create_directories(file.parent_path(), error);
  if (!error) error = ReplaceFile(file, TextOfKeyFile(keys.get()), NewFile::AsUsual);
  if (error) return Fail(file.native() + ": " + error.message());
  return {};
}

}  // namespace tessaro::platform
