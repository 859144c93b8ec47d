#include "Platform/LoginItems.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string_view>
#include <system_error>

#include "Platform/Linux/Base/BaseDirectories.h"
#include "Platform/Linux/Desktop/AutostartEntry.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr char kFolder[] = "autostart";
constexpr char kExtension[] = ".desktop";

fs::path UserFolder() { return ConfigHome() / kFolder; }

// The most important one first.
std::vector<fs::path> Folders() {
  std::vector<fs::path> folders = {UserFolder()};
  for (const fs::path& directory : ConfigDirectories()) folders.push_back(directory / kFolder);
  return folders;
}

// The entries of all folders by the names of their files, of which the first counts.
std::map<std::string, fs::path> EffectiveFiles() {
  std::map<std::string, fs::path> files;
  for (const fs::path& folder : Folders()) {
    std::error_code error;
    for (fs::directory_iterator each(folder, error), end; !error && each != end; each.increment(error)) {
      if (each->path().extension() == kExtension) files.emplace(each->path().filename(), each->path());
    }
  }
  return files;
}

// The file of the same name that counts when the user's is gone.
fs::path FileBelow(const fs::path& userFile) {
  for (const fs::path& directory : ConfigDirectories()) {
    std::error_code error;
    fs::path file = directory / kFolder / userFile.filename();
    if (fs::exists(file, error)) return file;
  }
  return {};
}

fs::path Resolved(const std::string& path) {
  std::error_code error;
  fs::path resolved = fs::canonical(path, error);
  return error ? fs::path(path) : resolved;
}

// An application in an image runs from a mount point that is another each time.
fs::path StartedFile(const LoginApplication& application) {
  const char* image = std::getenv("APPIMAGE");
  const char* mount = std::getenv("APPDIR");
  const bool isInImage =
      image != nullptr && mount != nullptr && *mount != '\0' && application.executablePath.starts_with(mount);
  return Resolved(isInImage ? image : application.executablePath);
}

// What `file` starts; of a file that only hides another one, what that one starts.
fs::path ProgramOf(const fs::path& file) {
  const auto entry = AutostartEntry::Read(file);
  if (!entry) return {};
  fs::path program = entry->Program();
  if (!program.empty()) return program;
  const auto hidden = AutostartEntry::Read(FileBelow(file));
  return hidden ? hidden->Program() : fs::path();
}

fs::path NewFile(const LoginApplication& application) {
  const std::string name = StartedFile(application).stem();
  const auto taken = EffectiveFiles();
  std::string file = name + kExtension;
  for (int number = 2; taken.contains(file); ++number) file = name + '-' + std::to_string(number) + kExtension;
  return UserFolder() / file;
}

bool IsGone(const fs::path& file) {
  std::error_code error;
  return fs::remove(file, error) && !error;
}

bool SwitchOn(const fs::path& file) {
  auto entry = AutostartEntry::Read(file);
  if (!entry) return false;
  // One that does nothing but hide another is in the way.
  if (entry->Program().empty()) return IsGone(file);
  entry->SwitchOn();
  return entry->Write(file.parent_path() == UserFolder() ? file : UserFolder() / file.filename());
}

}  // namespace

std::optional<std::vector<LoginItem>> LoginItems() noexcept {
  std::vector<LoginItem> items;
  for (const auto& [name, file] : EffectiveFiles()) {
    const auto entry = AutostartEntry::Read(file);
    if (!entry || !entry->IsSwitchedOn()) continue;
    if (const fs::path program = entry->Program(); !program.empty()) {
      items.push_back({file, program, entry->DisplayName()});
    }
  }
  return items;
}

bool Starts(const LoginItem& item, const LoginApplication& application) noexcept {
  return item.application == StartedFile(application);
}

bool InsertLoginItem(const LoginApplication& application) noexcept {
  const fs::path started = StartedFile(application);
  for (const auto& [name, file] : EffectiveFiles()) {
    if (ProgramOf(file) == started) return SwitchOn(file);
  }
  return AutostartEntry::ForApplication(application.displayName, started.native()).Write(NewFile(application));
}

bool RemoveLoginItem(const LoginItem& item) noexcept {
  const fs::path userFile = UserFolder() / fs::path(item.reference).filename();
  auto below = AutostartEntry::Read(FileBelow(userFile));
  if (!below) return IsGone(userFile);
  // Without the user's file the system's would count.
  auto own = AutostartEntry::Read(userFile);
  AutostartEntry& entry = own ? *own : *below;
  entry.Hide();
  return entry.Write(userFile);
}

}  // namespace tessaro::platform
