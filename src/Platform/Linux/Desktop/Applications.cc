#include "Platform/Applications.h"

#include <sdbus-c++/sdbus-c++.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <system_error>

#include "Base/TextPieces.h"
#include "Platform/Linux/Base/KeyFiles.h"
#include "Platform/Linux/Base/Paths.h"
#include "Platform/Linux/Base/SessionBus.h"
#include "Platform/Linux/Desktop/DesktopEntries.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

using AppListPtr = std::unique_ptr<GList, decltype([](GList* list) { g_list_free_full(list, g_object_unref); })>;

constexpr char kSchemes[] = "x-scheme-handler/";
constexpr char kFileManager[] = "org.freedesktop.FileManager1";
constexpr char kFileManagerPath[] = "/org/freedesktop/FileManager1";
constexpr std::chrono::seconds kFileManagerDeadline{2};
// These programs open with their print dialog.
constexpr std::array kPreviewers = {"evince-previewer", "atril-previewer", "xreader-previewer"};

std::string TextOf(GDesktopAppInfo* application, const char* key) {
  const GTextPtr text(g_desktop_app_info_get_string(application, key));
  return text != nullptr ? text.get() : "";
}

// Empty for a malformed scheme.
std::string TypeOfScheme(std::string_view scheme) {
  const auto isMalformed = [](char c) { return !IsLetterOrDigit(c) && c != '+' && c != '-' && c != '.'; };
  if (scheme.empty() || std::any_of(scheme.begin(), scheme.end(), isMalformed)) return {};
  return kSchemes + LowerCase(scheme);
}

bool Exists(const std::string& path) {
  std::error_code error;
  return !path.empty() && !HasNul(path) && fs::exists(path, error);
}

// ---- Lists of default applications

constexpr char kListFile[] = "mimeapps.list";
constexpr char kDefaultsGroup[] = "Default Applications";

// A desktop may have lists of its own, which take precedence: "gnome-mimeapps.list".
std::vector<std::string> FileNames() {
  std::vector<std::string> names;
  for (const std::string& desktop : CurrentDesktops()) {
    if (!desktop.empty()) names.push_back(LowerCase(desktop) + '-' + kListFile);
  }
  names.push_back(kListFile);
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
  return keys ? ListIn(keys.get(), kDefaultsGroup, type.c_str()) : std::vector<std::string>();
}

// Write to the file that lookups read first, or the choice would be shadowed.
fs::path UserFile(const std::string& type) {
  for (const std::string& name : FileNames()) {
    fs::path file = ConfigHome() / name;
    if (!Entries(ReadKeyFile(file), type).empty()) return file;
  }
  return ConfigHome() / kListFile;
}

// The default applications of a content type by the MIME applications standard, as desktop files in descending
// precedence. Some may not exist.
std::vector<std::string> ListedDefaults(const std::string& type) {
  std::vector<std::string> defaults;
  for (const fs::path& file : Files()) {
    for (std::string& entry : Entries(ReadKeyFile(file), type)) defaults.push_back(std::move(entry));
  }
  return defaults;
}

// Puts a desktop file in front of the user's list for a content type, and keeps the rest of the list.
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
  g_key_file_set_value(keys.get(), kDefaultsGroup, type.c_str(), list.c_str());
  return WriteKeyFile(file, keys.get());
}

}  // namespace

std::optional<Application> FindApplication(std::string_view identifier) noexcept {
  const DesktopEntryPtr application = FindDesktopEntry(identifier);
  if (application == nullptr) return std::nullopt;
  const char* path = g_desktop_app_info_get_filename(application.get());
  if (path == nullptr) return std::nullopt;
  std::string name = TextOf(application.get(), G_KEY_FILE_DESKTOP_KEY_NAME);
  if (name.empty()) name = identifier;
  return Application{std::string(identifier), path, std::move(name)};
}

std::string ContentTypeOfExtension(std::string_view extension) noexcept {
  if (extension.empty() || HasNul(extension) || extension.find('/') != std::string_view::npos) return {};
  gboolean isUncertain = TRUE;
  const GTextPtr type(g_content_type_guess(("name." + std::string(extension)).c_str(), nullptr, 0, &isUncertain));
  return isUncertain ? "" : type.get();
}

std::string ContentTypeOfFile(const std::string& path) noexcept {
  std::error_code error;
  if (fs::is_directory(path, error)) return "inode/directory";
  const GTextPtr type(g_content_type_guess(path.c_str(), nullptr, 0, nullptr));
  return type.get();
}

std::vector<std::string> HandlersOfContentType(const std::string& type) noexcept {
  if (type.empty()) return {};
  std::vector<std::string> handlers;
  if (std::string standard = DefaultHandlerOfContentType(type); !standard.empty()) {
    handlers.push_back(std::move(standard));
  }
  const AppListPtr all(g_app_info_get_all_for_type(type.c_str()));
  for (const GList* each = all.get(); each != nullptr; each = each->next) {
    const char* file = g_app_info_get_id(static_cast<GAppInfo*>(each->data));
    if (file == nullptr) continue;
    std::string identifier = IdentifierOf(file);
    if (std::find(handlers.begin(), handlers.end(), identifier) == handlers.end()) {
      handlers.push_back(std::move(identifier));
    }
  }
  return handlers;
}

std::vector<std::string> HandlersOfScheme(std::string_view scheme) noexcept {
  return HandlersOfContentType(TypeOfScheme(scheme));
}

std::string DefaultHandlerOfContentType(const std::string& type) noexcept {
  if (type.empty()) return {};
  // Not GIO's own answer: it notices changes of the lists too late.
  for (const std::string& file : ListedDefaults(type)) {
    std::string identifier = IdentifierOf(file);
    if (FindDesktopEntry(identifier) != nullptr) return identifier;
  }
  const GObjectPtr<GAppInfo> application(g_app_info_get_default_for_type(type.c_str(), FALSE));
  const char* file = application != nullptr ? g_app_info_get_id(application.get()) : nullptr;
  return file != nullptr ? IdentifierOf(file) : "";
}

std::string DefaultHandlerOfScheme(std::string_view scheme) noexcept {
  return DefaultHandlerOfContentType(TypeOfScheme(scheme));
}

Result<void> SetDefaultHandlerOfScheme(std::string_view scheme, std::string_view identifier) noexcept {
  const std::string type = TypeOfScheme(scheme);
  if (type.empty()) return Fail("there can be no such scheme");
  if (FindDesktopEntry(identifier) == nullptr) return Fail("no such application");
  return WriteListedDefault(type, std::string(identifier) + std::string(kDesktopExtension));
}

Result<void> OpenFile(const std::string& path, const std::string& application) noexcept {
  if (!Exists(path)) return Fail("there is no such file");
  const DesktopEntryPtr entry = application.empty()
                                    ? FindDesktopEntry(DefaultHandlerOfContentType(ContentTypeOfFile(path)))
                                    : DesktopEntryAt(application);
  return LaunchEntry(entry.get(), {FileURIOf(path)});
}

Result<void> OpenFiles(const std::vector<std::string>& paths, std::string_view identifier) noexcept {
  std::vector<std::string> uris;
  for (const std::string& path : paths) {
    if (std::string uri = FileURIOf(path); !uri.empty()) uris.push_back(std::move(uri));
  }
  if (uris.empty()) return Fail("there are no files to open");
  return LaunchEntry(FindDesktopEntry(identifier).get(), uris);
}

Result<void> OpenURL(const std::string& url, std::string_view identifier) noexcept {
  const GTextPtr scheme(g_uri_parse_scheme(url.c_str()));
  if (scheme == nullptr || HasNul(url)) return Fail("not a URL");
  const std::string handler(identifier.empty() ? DefaultHandlerOfScheme(scheme.get()) : identifier);
  return LaunchEntry(FindDesktopEntry(handler).get(), {url});
}

Result<void> LaunchApplication(std::string_view identifier) noexcept {
  return LaunchEntry(FindDesktopEntry(identifier).get(), {});
}

Result<void> ShowFileInformation(const std::string& path) noexcept {
  if (!Exists(path)) return Fail("there is no such file");
  auto* bus = SessionBus::Shared().Connection();
  if (bus == nullptr) return Fail(SessionBus::Shared().LastError());
  return TryOnBus([&] {
    sdbus::createProxy(*bus, kFileManager, kFileManagerPath)
        ->callMethod("ShowItemProperties")
        .onInterface(kFileManager)
        .withTimeout(kFileManagerDeadline)
        .withArguments(std::vector<std::string>{FileURIOf(path)}, std::string());
  });
}

Result<void> PrintFile(const std::string& path) noexcept {
  std::error_code error;
  if (HasNul(path) || !fs::is_regular_file(path, error)) return Fail("there is no such file");
  const std::string absolute = AbsolutePath(path);
  for (const char* previewer : kPreviewers) {
    if (Spawn({previewer, absolute})) return {};
  }
  // lp and lpr would print without a dialog.
  return OpenFile(absolute, "");
}

// Packages decide where programs live on Linux: there is no folder to move to.
void OfferMoveToApplicationsFolder() {}

}  // namespace tessaro::platform
