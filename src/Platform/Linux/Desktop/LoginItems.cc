#include "Platform/LoginItems.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "Platform/Linux/Base/KeyFiles.h"
#include "Platform/Linux/Base/Paths.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

// ---- Desktop entries of the XDG autostart folders

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

bool Has(const GKeyFilePtr& entry, const char* key) { return g_key_file_has_key(entry.get(), kGroup, key, nullptr); }

bool IsTrue(const GKeyFilePtr& entry, const char* key) {
  return g_key_file_get_boolean(entry.get(), kGroup, key, nullptr);
}

GKeyFilePtr NewEntry(const std::string& name, std::string_view executable) {
  GKeyFilePtr entry(g_key_file_new());
  const auto set = [&](const char* key, const std::string& value) {
    g_key_file_set_string(entry.get(), kGroup, key, value.c_str());
  };
  set("Type", "Application");
  set("Name", name);
  set("Exec", ExecOf(executable));
  set(kSwitch, "true");
  return entry;
}

// nullptr for a file that is no desktop entry.
GKeyFilePtr ReadEntry(const fs::path& file) {
  GKeyFilePtr entry = ReadKeyFile(file);
  return entry && g_key_file_has_group(entry.get(), kGroup) ? std::move(entry) : nullptr;
}

std::string DisplayNameOf(const GKeyFilePtr& entry) {
  const GTextPtr name(g_key_file_get_locale_string(entry.get(), kGroup, "Name", nullptr, nullptr));
  return name != nullptr ? g_strchomp(name.get()) : "";
}

// The resolved path of the program that the entry starts; empty if missing.
fs::path ProgramIn(const GKeyFilePtr& entry) {
  char** words = nullptr;
  if (!g_shell_parse_argv(TextIn(entry.get(), kGroup, "Exec").c_str(), nullptr, &words, nullptr)) return {};
  const GStringListPtr owned(words);
  std::string program = words[0];
  for (auto at = program.find("%%"); at != std::string::npos; at = program.find("%%", at + 1)) program.erase(at, 1);
  std::error_code error;
  const fs::path path = program.starts_with('/') ? fs::path(program) : InSearchPath(program);
  const fs::path resolved = path.empty() ? path : fs::canonical(path, error);
  return error ? fs::path() : resolved;
}

bool NamesThisDesktop(const GKeyFilePtr& entry, const char* key) {
  const auto named = ListIn(entry.get(), kGroup, key);
  const auto desktops = CurrentDesktops();
  return std::find_first_of(named.begin(), named.end(), desktops.begin(), desktops.end()) != named.end();
}

// Whether a session of this desktop starts the entry's program.
bool IsSwitchedOn(const GKeyFilePtr& entry) {
  if (IsTrue(entry, "Hidden") || (Has(entry, kSwitch) && !IsTrue(entry, kSwitch))) return false;
  const std::string wanted = TextIn(entry.get(), kGroup, "TryExec");
  if (!wanted.empty() && InSearchPath(wanted).empty()) return false;
  return Has(entry, "OnlyShowIn") ? NamesThisDesktop(entry, "OnlyShowIn") : !NamesThisDesktop(entry, "NotShowIn");
}

void Show(const GKeyFilePtr& entry) {
  g_key_file_remove_key(entry.get(), kGroup, "Hidden", nullptr);
  g_key_file_set_boolean(entry.get(), kGroup, kSwitch, TRUE);
}

void Hide(const GKeyFilePtr& entry) { g_key_file_set_boolean(entry.get(), kGroup, "Hidden", TRUE); }

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
  const GKeyFilePtr entry = ReadEntry(file);
  if (!entry) return {};
  fs::path program = ProgramIn(entry);
  if (!program.empty()) return program;
  const GKeyFilePtr hidden = ReadEntry(FileBelow(file));
  return hidden ? ProgramIn(hidden) : fs::path();
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

// Writing keeps the keys and comments that this file doesn't know.
Result<void> SwitchOn(const fs::path& file) {
  const GKeyFilePtr entry = ReadEntry(file);
  if (!entry) return Fail(file.native() + " can't be read");
  // An entry without a program only hides the system's one.
  if (ProgramIn(entry).empty()) return RemoveFile(file);
  Show(entry);
  return WriteKeyFile(UserFolder() / file.filename(), entry.get());
}

Result<void> SwitchOff(const fs::path& file) {
  const fs::path userFile = UserFolder() / file.filename();
  GKeyFilePtr entry = ReadEntry(FileBelow(userFile));
  if (!entry) return RemoveFile(userFile);
  // Removing the user's file would bring the system's one back: hide it.
  if (GKeyFilePtr own = ReadEntry(userFile)) entry = std::move(own);
  Hide(entry);
  return WriteKeyFile(userFile, entry.get());
}

Result<void> Add(const LoginApplication& application) {
  const fs::path started = StartedFile(application);
  for (const auto& [name, file] : EffectiveFiles()) {
    if (ProgramOf(file) == started) return SwitchOn(file);
  }
  return WriteKeyFile(NewFile(application), NewEntry(application.displayName, started.native()).get());
}

// The first file that the session starts and that `matches`; empty if missing.
template <typename Matches>
fs::path FirstActive(const Matches& matches) {
  for (const auto& [name, file] : EffectiveFiles()) {
    const GKeyFilePtr entry = ReadEntry(file);
    if (entry && IsSwitchedOn(entry) && !ProgramIn(entry).empty() && matches(entry)) return file;
  }
  return {};
}

fs::path FirstStarting(const LoginApplication& application) {
  return FirstActive(
      [started = StartedFile(application)](const GKeyFilePtr& entry) { return ProgramIn(entry) == started; });
}

}  // namespace

bool StartsAtLogin(const LoginApplication& application) noexcept { return !FirstStarting(application).empty(); }

Result<void> SetStartsAtLogin(const LoginApplication& application, bool starts) noexcept {
  const fs::path file = FirstStarting(application);
  if (starts == !file.empty()) return {};
  return starts ? Add(application) : SwitchOff(file);
}

Result<void> RemoveLoginItemNamed(const std::string& displayName) noexcept {
  const fs::path file = FirstActive([&](const GKeyFilePtr& entry) { return DisplayNameOf(entry) == displayName; });
  return file.empty() ? Result<void>() : SwitchOff(file);
}

}  // namespace tessaro::platform
