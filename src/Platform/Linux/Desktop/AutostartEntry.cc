#include "Platform/Linux/Desktop/AutostartEntry.h"

#include <algorithm>
#include <system_error>
#include <vector>

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr char kGroup[] = G_KEY_FILE_DESKTOP_GROUP;
constexpr char kSwitch[] = "X-GNOME-Autostart-enabled";

fs::path InSearchPath(const std::string& program) {
  const GTextPtr found(g_find_program_in_path(program.c_str()));
  return found != nullptr ? found.get() : "";
}

}  // namespace

AutostartEntry AutostartEntry::ForApplication(std::string_view name, std::string_view executable) {
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

std::optional<AutostartEntry> AutostartEntry::Read(const fs::path& file) {
  GKeyFilePtr keys = ReadKeyFile(file);
  if (!keys || !g_key_file_has_group(keys.get(), kGroup)) return std::nullopt;
  return AutostartEntry(std::move(keys));
}

std::string AutostartEntry::DisplayName() const {
  const GTextPtr name(g_key_file_get_locale_string(keys_.get(), kGroup, "Name", nullptr, nullptr));
  return name != nullptr ? name.get() : "";
}

fs::path AutostartEntry::Program() const {
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

bool AutostartEntry::NamesThisDesktop(const char* key) const {
  const auto named = ListIn(keys_.get(), kGroup, key);
  const auto desktops = CurrentDesktops();
  return std::find_first_of(named.begin(), named.end(), desktops.begin(), desktops.end()) != named.end();
}

bool AutostartEntry::IsSwitchedOn() const {
  if (g_key_file_get_boolean(keys_.get(), kGroup, "Hidden", nullptr)) return false;
  if (Has(kSwitch) && !g_key_file_get_boolean(keys_.get(), kGroup, kSwitch, nullptr)) return false;
  const std::string wanted = TextIn(keys_.get(), kGroup, "TryExec");
  if (!wanted.empty() && InSearchPath(wanted).empty()) return false;
  return Has("OnlyShowIn") ? NamesThisDesktop("OnlyShowIn") : !NamesThisDesktop("NotShowIn");
}

void AutostartEntry::SwitchOn() {
  g_key_file_remove_key(keys_.get(), kGroup, "Hidden", nullptr);
  g_key_file_set_boolean(keys_.get(), kGroup, kSwitch, TRUE);
}

void AutostartEntry::Hide() { g_key_file_set_boolean(keys_.get(), kGroup, "Hidden", TRUE); }

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
