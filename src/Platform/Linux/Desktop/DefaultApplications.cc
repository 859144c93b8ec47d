#include "Platform/Linux/Desktop/DefaultApplications.h"

#include <filesystem>
#include <system_error>

#include "Platform/Linux/Base/BaseDirectories.h"
#include "Platform/Linux/Base/KeyFiles.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr char kFile[] = "mimeapps.list";
constexpr char kDefaults[] = "Default Applications";

// A desktop may have lists of its own, which take precedence: "gnome-mimeapps.list".
std::vector<std::string> FileNames() {
  std::vector<std::string> names;
  for (const std::string& desktop : CurrentDesktops()) {
    const GTextPtr lower(g_ascii_strdown(desktop.c_str(), -1));
    if (!desktop.empty()) names.push_back(std::string(lower.get()) + '-' + kFile);
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

std::vector<std::string> Entries(const GKeyFilePtr& keys, const std::string& type) {
  return keys ? ListIn(keys.get(), kDefaults, type.c_str()) : std::vector<std::string>();
}

// Write to the file that lookups read first, or the choice would be shadowed.
fs::path UserFile(const std::string& type) {
  for (const std::string& name : FileNames()) {
    fs::path file = ConfigHome() / name;
    if (!Entries(ReadKeyFile(file), type).empty()) return file;
  }
  return ConfigHome() / kFile;
}

}  // namespace

std::vector<std::string> ListedDefaults(const std::string& type) {
  std::vector<std::string> defaults;
  for (const fs::path& file : Files()) {
    for (std::string& entry : Entries(ReadKeyFile(file), type)) defaults.push_back(std::move(entry));
  }
  return defaults;
}

Result<void> WriteListedDefault(const std::string& type, const std::string& desktopFile) {
  const fs::path file = UserFile(type);
  GKeyFilePtr keys = ReadKeyFile(file);
  // Don't overwrite a list that can't be parsed: the user may have written it.
  if (std::error_code error; !keys && (fs::exists(file, error) || error)) {
    return Fail(file.native() + " can't be parsed");
  }
  if (!keys) keys.reset(g_key_file_new());
  std::string list = desktopFile + ';';
  for (const std::string& entry : Entries(keys, type)) {
    if (entry != desktopFile) list += entry + ';';
  }
  g_key_file_set_value(keys.get(), kDefaults, type.c_str(), list.c_str());
  return WriteKeyFile(file, keys.get());
}

}  // namespace tessaro::platform
