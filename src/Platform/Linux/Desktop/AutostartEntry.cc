#include "Platform/Linux/Desktop/AutostartEntry.h"

#include <algorithm>
#include <cstdlib>
#include <system_error>

#include "Platform/FileWriting.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr char kSwitch[] = "X-GNOME-Autostart-enabled";
// Reading blocks script: refuse absurd files.
constexpr std::uintmax_t kLongestFile = 1 << 20;

// Regular files only: opening a pipe would wait for its other end.
bool IsReadable(const fs::path& file) {
  std::error_code error;
  if (!fs::is_regular_file(file, error)) return false;
  const auto size = fs::file_size(file, error);
  return !error && size <= kLongestFile;
}

fs::path InSearchPath(const char* program) {
  const GTextPtr found(g_find_program_in_path(program));
  return found != nullptr ? found.get() : "";
}

bool ContainsDesktop(const GStringListPtr& desktops, std::string_view name) {
  for (char** each = desktops.get(); each != nullptr && *each != nullptr; ++each) {
    if (name == *each) return true;
  }
  return false;
}

}  // namespace

AutostartEntry AutostartEntry::ForApplication(std::string_view name, std::string_view executable) {
  GKeyFilePtr keys(g_key_file_new());
  const auto set = [&](const char* key, const std::string& value) {
    g_key_file_set_string(keys.get(), G_KEY_FILE_DESKTOP_GROUP, key, value.c_str());
  };
  set("Type", "Application");
  set("Name", std::string(name));
  set("Exec", ExecOf(executable));
  set(kSwitch, "true");
  return AutostartEntry(std::move(keys));
}

std::optional<AutostartEntry> AutostartEntry::Read(const fs::path& file) {
  if (!IsReadable(file)) return std::nullopt;
  constexpr auto kEverything = static_cast<GKeyFileFlags>(G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS);
  GKeyFilePtr keys(g_key_file_new());
  if (!g_key_file_load_from_file(keys.get(), file.c_str(), kEverything, nullptr) ||
      !g_key_file_has_group(keys.get(), G_KEY_FILE_DESKTOP_GROUP)) {
    return std::nullopt;
  }
  return AutostartEntry(std::move(keys));
}

Result<void> AutostartEntry::Write(const fs::path& file) const {
  std::error_code error;
  fs::create_directories(file.parent_path(), error);
  if (!error) error = ReplaceFile(file, TextOfKeyFile(keys_.get()), NewFile::AsUsual);
  if (error) return Fail(file.native() + ": " + error.message());
  return {};
}

std::string AutostartEntry::Text(const char* key) const {
  const GTextPtr value(g_key_file_get_string(keys_.get(), G_KEY_FILE_DESKTOP_GROUP, key, nullptr));
  return value != nullptr ? value.get() : "";
}

std::optional<bool> AutostartEntry::Flag(const char* key) const {
  GError* raised = nullptr;
  const gboolean value = g_key_file_get_boolean(keys_.get(), G_KEY_FILE_DESKTOP_GROUP, key, &raised);
  const GErrorPtr error(raised);
  return error ? std::nullopt : std::optional<bool>(value);
}

std::string AutostartEntry::DisplayName() const {
  const GTextPtr name(g_key_file_get_locale_string(keys_.get(), G_KEY_FILE_DESKTOP_GROUP, "Name", nullptr, nullptr));
  return name != nullptr ? name.get() : "";
}

fs::path AutostartEntry::Program() const {
  char** words = nullptr;
  if (!g_shell_parse_argv(Text("Exec").c_str(), nullptr, &words, nullptr)) return {};
  const GStringListPtr owned(words);
  std::string program = words[0];
  for (auto at = program.find("%%"); at != std::string::npos; at = program.find("%%", at + 1)) program.erase(at, 1);
  std::error_code error;
  const fs::path path = program.starts_with('/') ? fs::path(program) : InSearchPath(program.c_str());
  const fs::path resolved = path.empty() ? path : fs::canonical(path, error);
  return error ? fs::path() : resolved;
}

bool AutostartEntry::NamesThisDesktop(const char* key) const {
  const char* current = std::getenv("XDG_CURRENT_DESKTOP");
  const GStringListPtr ours(g_strsplit(current != nullptr ? current : "", ":", 0));
  const GStringListPtr named(g_key_file_get_string_list(keys_.get(), G_KEY_FILE_DESKTOP_GROUP, key, nullptr, nullptr));
  for (char** each = ours.get(); *each != nullptr; ++each) {
    if (ContainsDesktop(named, *each)) return true;
  }
  return false;
}

bool AutostartEntry::IsSwitchedOn() const {
  if (Flag("Hidden").value_or(false) || !Flag(kSwitch).value_or(true)) return false;
  if (const std::string wanted = Text("TryExec"); !wanted.empty() && InSearchPath(wanted.c_str()).empty()) return false;
  const bool isForSome = g_key_file_has_key(keys_.get(), G_KEY_FILE_DESKTOP_GROUP, "OnlyShowIn", nullptr);
  return isForSome ? NamesThisDesktop("OnlyShowIn") : !NamesThisDesktop("NotShowIn");
}

void AutostartEntry::SwitchOn() {
  g_key_file_remove_key(keys_.get(), G_KEY_FILE_DESKTOP_GROUP, "Hidden", nullptr);
  g_key_file_set_boolean(keys_.get(), G_KEY_FILE_DESKTOP_GROUP, kSwitch, TRUE);
}

void AutostartEntry::Hide() { g_key_file_set_boolean(keys_.get(), G_KEY_FILE_DESKTOP_GROUP, "Hidden", TRUE); }

std::string ExecOf(std::string_view executable) {
  std::string quoted = "\"";
  for (const char c : executable) {
    if (std::string_view("\"`$\\").find(c) != std::string_view::npos) quoted += '\\';
    if (c == '%') quoted += '%';
    quoted += c;
  }
  return quoted + '"';
}

}  // namespace tessaro::platform
