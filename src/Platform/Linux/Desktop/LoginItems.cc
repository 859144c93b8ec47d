#include "Platform/LoginItems.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

#include "Platform/Linux/Base/BaseDirectories.h"
#include "Platform/Linux/Base/KeyFiles.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

// ---- Entries

constexpr char kGroup[] = G_KEY_FILE_DESKTOP_GROUP;
constexpr char kSwitch[] = "X-GNOME-Autostart-enabled";

fs::path InSearchPath(const std::string& program) {
  const GTextPtr found(g_find_program_in_path(program.c_str()));
  return found != nullptr ? found.get() : "";
}

// The text of an Exec key that starts `executable` without arguments.
std::string ExecOf(std::string_view executable) {
  std::string quoted = "\"";
  for (const char c : executable) {
    if (std::string_view("\"`$\\").find(c) != std::string_view::npos) quoted += '\\';
    if (c == '%') quoted += '%';
    quoted += c;
  }
  return quoted + '"';
}

// A desktop entry of the XDG autostart folders. Writing keeps the keys and comments that this class doesn't know.
class AutostartEntry {
 public:
  static AutostartEntry ForApplication(std::string_view name, std::string_view executable) {
    GKeyFilePtr keys(g_key_file_new());
    const auto set = [&](const char* key, const std::string& value) {
      g_key_file_set_string(keys.get(), kGroup, key, value.c_str());
    };
    set("Type", "Application");
    set("Name", std::string(name));
    set("Exec", ExecOf(executable));
    set(kSwitch, "true");
    return AutostartEntry(std::move(keys));
  }

  // Nothing for a file that is no desktop entry.
  static std::optional<AutostartEntry> Read(const fs::path& file) {
    GKeyFilePtr keys = ReadKeyFile(file);
    if (!keys || !g_key_file_has_group(keys.get(), kGroup)) return std::nullopt;
    return AutostartEntry(std::move(keys));
  }

  [[nodiscard]] Result<void> Write(const std::filesystem::path& file) const { return WriteKeyFile(file, keys_.get()); }

  [[nodiscard]] std::string DisplayName() const {
    const GTextPtr name(g_key_file_get_locale_string(keys_.get(), kGroup, "Name", nullptr, nullptr));
    return name != nullptr ? g_strchomp(name.get()) : "";
  }

  // The resolved path of the program; empty if missing.
  [[nodiscard]] std::filesystem::path Program() const {
    char** words = nullptr;
    if (!g_shell_parse_argv(TextIn(keys_.get(), kGroup, "Exec").c_str(), nullptr, &words, nullptr)) return {};
    const GStringListPtr owned(words);
    std::string program = words[0];
    for (auto at = program.find("%%"); at != std::string::npos; at = program.find("%%", at + 1)) program.erase(at, 1);
    std::error_code error;
    const fs::path path = program.starts_with('/') ? fs::path(program) : InSearchPath(program);
    const fs::path resolved = path.empty() ? path : fs::canonical(path, error);
    return error ? fs::path() : resolved;
  }

  // Whether a session of this desktop starts it.
  [[nodiscard]] bool IsSwitchedOn() const {
    if (g_key_file_get_boolean(keys_.get(), kGroup, "Hidden", nullptr)) return false;
    if (Has(kSwitch) && !g_key_file_get_boolean(keys_.get(), kGroup, kSwitch, nullptr)) return false;
    const std::string wanted = TextIn(keys_.get(), kGroup, "TryExec");
    if (!wanted.empty() && InSearchPath(wanted).empty()) return false;
    return Has("OnlyShowIn") ? NamesThisDesktop("OnlyShowIn") : !NamesThisDesktop("NotShowIn");
  }

  void SwitchOn() {
    g_key_file_remove_key(keys_.get(), kGroup, "Hidden", nullptr);
    g_key_file_set_boolean(keys_.get(), kGroup, kSwitch, TRUE);
  }

  void Hide() { g_key_file_set_boolean(keys_.get(), kGroup, "Hidden", TRUE); }

 private:
  explicit AutostartEntry(GKeyFilePtr keys) : keys_(std::move(keys)) {}

  [[nodiscard]] bool Has(const char* key) const {
    return g_key_file_has_key(keys_.get(), G_KEY_FILE_DESKTOP_GROUP, key, nullptr);
  }
  [[nodiscard]] bool NamesThisDesktop(const char* key) const {
    const auto named = ListIn(keys_.get(), kGroup, key);
    const auto desktops = CurrentDesktops();
    return std::find_first_of(named.begin(), named.end(), desktops.begin(), desktops.end()) != named.end();
  }

  GKeyFilePtr keys_;
};

// ---- Folders

constexpr char kFolder[] = "autostart";
constexpr char kExtension[] = ".desktop";

fs::path UserFolder() { return ConfigHome() / kFolder; }

// In descending precedence.
std::vector<fs::path> Folders() {
  std::vector<fs::path> folders = {UserFolder()};
  for (const fs::path& directory : ConfigDirectories()) folders.push_back(directory / kFolder);
  return folders;
}

// The entries of all folders by file name; the first folder that has a name wins.
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

// The system's file that the user's one overrides.
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

// An AppImage runs from a mount point that changes with each start.
fs::path StartedFile(const LoginApplication& application) {
  const char* image = std::getenv("APPIMAGE");
  const char* mount = std::getenv("APPDIR");
  const bool isInImage =
      image != nullptr && mount != nullptr && *mount != '\0' && application.executablePath.starts_with(mount);
  return Resolved(isInImage ? image : application.executablePath);
}

// The program that `file` starts, or that the file hidden by it would start.
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

Result<void> RemoveFile(const fs::path& file) {
  std::error_code error;
  if (fs::remove(file, error) && !error) return {};
  return Fail(file.native() + ": " + (error ? error.message() : "there is no such file"));
}

Result<void> SwitchOn(const fs::path& file) {
  auto entry = AutostartEntry::Read(file);
  if (!entry) return Fail(file.native() + " can't be read");
  // An entry without a program only hides the system's one.
  if (entry->Program().empty()) return RemoveFile(file);
  entry->SwitchOn();
  return entry->Write(file.parent_path() == UserFolder() ? file : UserFolder() / file.filename());
}

Result<void> SwitchOff(const fs::path& file) {
  const fs::path userFile = UserFolder() / file.filename();
  auto below = AutostartEntry::Read(FileBelow(userFile));
  if (!below) return RemoveFile(userFile);
  // Removing the user's file would bring the system's one back: hide it.
  auto own = AutostartEntry::Read(userFile);
  AutostartEntry& entry = own ? *own : *below;
  entry.Hide();
  return entry.Write(userFile);
}

Result<void> Add(const LoginApplication& application) {
  const fs::path started = StartedFile(application);
  for (const auto& [name, file] : EffectiveFiles()) {
    if (ProgramOf(file) == started) return SwitchOn(file);
  }
  return AutostartEntry::ForApplication(application.displayName, started.native()).Write(NewFile(application));
}

// The first file that the session starts and that `matches`; empty if missing.
template <typename Matches>
fs::path FirstActive(const Matches& matches) {
  for (const auto& [name, file] : EffectiveFiles()) {
    const auto entry = AutostartEntry::Read(file);
    if (entry && entry->IsSwitchedOn() && !entry->Program().empty() && matches(*entry)) return file;
  }
  return {};
}

fs::path FirstStarting(const LoginApplication& application) {
  return FirstActive(
      [started = StartedFile(application)](const AutostartEntry& entry) { return entry.Program() == started; });
}

}  // namespace

bool StartsAtLogin(const LoginApplication& application) noexcept { return !FirstStarting(application).empty(); }

Result<void> SetStartsAtLogin(const LoginApplication& application, bool starts) noexcept {
  const fs::path file = FirstStarting(application);
  if (starts == !file.empty()) return {};
  return starts ? Add(application) : SwitchOff(file);
}

Result<void> RemoveLoginItemNamed(const std::string& displayName) noexcept {
  const fs::path file = FirstActive([&](const AutostartEntry& entry) { return entry.DisplayName() == displayName; });
  return file.empty() ? Result<void>() : SwitchOff(file);
}

}  // namespace tessaro::platform
