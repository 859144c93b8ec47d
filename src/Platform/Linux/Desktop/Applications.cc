#include "Platform/Applications.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gio/gdesktopappinfo.h>
#include <sdbus-c++/sdbus-c++.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <system_error>

#include "Platform/Linux/Base/GLibOwners.h"
#include "Platform/Linux/Base/SessionBus.h"
#include "Platform/Linux/Desktop/DefaultApplications.h"
#include "Platform/Linux/Desktop/IconTheme.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

using AppInfoPtr = GObjectPtr<GDesktopAppInfo>;
using AppListPtr = std::unique_ptr<GList, decltype([](GList* list) { g_list_free_full(list, g_object_unref); })>;
using PixbufPtr = GObjectPtr<GdkPixbuf>;

constexpr std::string_view kExtension = ".desktop";
constexpr char kSchemes[] = "x-scheme-handler/";
constexpr int kLargestIcon = 1024;
constexpr std::uintmax_t kLongestIconFile = 16 << 20;
constexpr std::chrono::seconds kFileManagerDeadline{5};

bool HasNul(std::string_view text) { return text.find('\0') != std::string_view::npos; }

std::string IdentifierOf(std::string_view desktopFile) {
  if (desktopFile.ends_with(kExtension)) desktopFile.remove_suffix(kExtension.size());
  return std::string(desktopFile);
}

AppInfoPtr Find(std::string_view identifier) {
  if (identifier.empty() || HasNul(identifier)) return nullptr;
  return AppInfoPtr(g_desktop_app_info_new((std::string(identifier) + std::string(kExtension)).c_str()));
}

std::string TextOf(GDesktopAppInfo* application, const char* key) {
  const GTextPtr text(g_desktop_app_info_get_string(application, key));
  return text != nullptr ? text.get() : "";
}

// Empty for what can't be a scheme.
std::string TypeOfScheme(std::string_view scheme) {
  std::string type = kSchemes;
  for (const char c : scheme) {
    if (!g_ascii_isalnum(c) && c != '+' && c != '-' && c != '.') return {};
    type += g_ascii_tolower(c);
  }
  return scheme.empty() ? "" : type;
}

// The path as a URI, which programs can't take for an option.
GTextPtr URIOf(const std::string& path) {
  const GTextPtr absolute(g_canonicalize_filename(path.c_str(), nullptr));
  return GTextPtr(g_filename_to_uri(absolute.get(), nullptr, nullptr));
}

// What is started leaves no child of ours behind, and doesn't write to our output.
bool LaunchWith(GDesktopAppInfo* application, GList* uris) {
  if (application == nullptr) return false;
  constexpr auto kFlags =
      static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL);
  return g_desktop_app_info_launch_uris_as_manager(application, uris, nullptr, kFlags, nullptr, nullptr, nullptr,
                                                   nullptr, nullptr);
}

bool Launch(GDesktopAppInfo* application, const char* uri) {
  GList list{const_cast<char*>(uri), nullptr, nullptr};
  return LaunchWith(application, uri != nullptr ? &list : nullptr);
}

AppInfoPtr ApplicationAt(const std::string& path) {
  if (HasNul(path)) return nullptr;
  if (path.starts_with('/')) return AppInfoPtr(g_desktop_app_info_new_from_filename(path.c_str()));
  return Find(IdentifierOf(path));
}

// ---- Icons

PixbufPtr Load(const fs::path& file, int size) {
  std::error_code error;
  if (!fs::is_regular_file(file, error) || fs::file_size(file, error) > kLongestIconFile || error) return nullptr;
  return PixbufPtr(gdk_pixbuf_new_from_file_at_size(file.c_str(), size, size, nullptr));
}

// In the middle of a clear square.
PixbufPtr Squared(PixbufPtr image, int size) {
  const int width = gdk_pixbuf_get_width(image.get());
  const int height = gdk_pixbuf_get_height(image.get());
  if (width == size && height == size) return image;
  PixbufPtr square(gdk_pixbuf_new(GDK_COLORSPACE_RGB, TRUE, 8, size, size));
  if (square == nullptr || width > size || height > size) return nullptr;
  gdk_pixbuf_fill(square.get(), 0);
  const PixbufPtr opaque(gdk_pixbuf_add_alpha(image.get(), FALSE, 0, 0, 0));
  gdk_pixbuf_copy_area(opaque.get(), 0, 0, width, height, square.get(), (size - width) / 2, (size - height) / 2);
  return square;
}

std::vector<std::uint8_t> PNGOf(const fs::path& file, int size) {
  PixbufPtr image = Load(file, size);
  if (image != nullptr) image = Squared(std::move(image), size);
  if (image == nullptr) return {};
  char* bytes = nullptr;
  gsize length = 0;
  if (!gdk_pixbuf_save_to_buffer(image.get(), &bytes, &length, "png", nullptr, nullptr)) return {};
  const GTextPtr owned(bytes);
  return {bytes, bytes + length};
}

std::vector<std::uint8_t> PNGOf(GIcon* icon, int size) {
  if (G_IS_FILE_ICON(icon)) {
    const GTextPtr path(g_file_get_path(g_file_icon_get_file(G_FILE_ICON(icon))));
    return path != nullptr ? PNGOf(fs::path(path.get()), size) : std::vector<std::uint8_t>();
  }
  if (!G_IS_THEMED_ICON(icon)) return {};
  for (const char* const* name = g_themed_icon_get_names(G_THEMED_ICON(icon)); *name != nullptr; ++name) {
    const fs::path file = ThemedIcon(*name, size);
    if (file.empty()) continue;
    if (auto png = PNGOf(file, size); !png.empty()) return png;
  }
  return {};
}

bool IsIconSize(int size) { return size > 0 && size <= kLargestIcon; }

}  // namespace

std::optional<Application> FindApplication(std::string_view identifier) noexcept {
  const AppInfoPtr application = Find(identifier);
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
  // The lists are read each time, because GIO learns of changes only a little later.
  for (const std::string& file : ListedDefaults(type)) {
    std::string identifier = IdentifierOf(file);
    if (Find(identifier) != nullptr) return identifier;
  }
  const GObjectPtr<GAppInfo> application(g_app_info_get_default_for_type(type.c_str(), FALSE));
  const char* file = application != nullptr ? g_app_info_get_id(application.get()) : nullptr;
  return file != nullptr ? IdentifierOf(file) : "";
}

std::string DefaultHandlerOfScheme(std::string_view scheme) noexcept {
  return DefaultHandlerOfContentType(TypeOfScheme(scheme));
}

bool SetDefaultHandlerOfScheme(std::string_view scheme, std::string_view identifier) noexcept {
  const std::string type = TypeOfScheme(scheme);
  if (type.empty() || Find(identifier) == nullptr) return false;
  return WriteListedDefault(type, std::string(identifier) + std::string(kExtension));
}

std::vector<std::uint8_t> IconOfApplication(std::string_view identifier, int size) noexcept {
  const AppInfoPtr application = Find(identifier);
  if (application == nullptr || !IsIconSize(size)) return {};
  GIcon* icon = g_app_info_get_icon(G_APP_INFO(application.get()));
  if (auto png = icon != nullptr ? PNGOf(icon, size) : std::vector<std::uint8_t>(); !png.empty()) return png;
  return PNGOf(ThemedIcon("application-x-executable", size), size);
}

std::vector<std::uint8_t> IconOfContentType(const std::string& type, int size) noexcept {
  if (!IsIconSize(size)) return {};
  const GObjectPtr<GIcon> icon(g_content_type_get_icon(type.empty() ? "application/octet-stream" : type.c_str()));
  if (auto png = PNGOf(icon.get(), size); !png.empty()) return png;
  return PNGOf(ThemedIcon("text-x-generic", size), size);
}

bool OpenFile(const std::string& path, const std::string& applicationPath) noexcept {
  std::error_code error;
  if (path.empty() || HasNul(path) || !fs::exists(path, error)) return false;
  const AppInfoPtr application = applicationPath.empty() ? Find(DefaultHandlerOfContentType(ContentTypeOfFile(path)))
                                                         : ApplicationAt(applicationPath);
  const GTextPtr uri = URIOf(path);
  return uri != nullptr && Launch(application.get(), uri.get());
}

bool OpenFiles(const std::vector<std::string>& paths, std::string_view identifier) noexcept {
  GList* uris = nullptr;
  for (const std::string& path : paths) {
    if (GTextPtr uri = URIOf(path)) uris = g_list_append(uris, uri.release());
  }
  const bool isLaunched = uris != nullptr && LaunchWith(Find(identifier).get(), uris);
  g_list_free_full(uris, g_free);
  return isLaunched;
}

bool OpenURL(const std::string& url, std::string_view identifier) noexcept {
  const GTextPtr scheme(g_uri_parse_scheme(url.c_str()));
  if (scheme == nullptr || HasNul(url)) return false;
  return Launch(Find(identifier.empty() ? DefaultHandlerOfScheme(scheme.get()) : identifier).get(), url.c_str());
}

bool LaunchApplication(std::string_view identifier) noexcept { return Launch(Find(identifier).get(), nullptr); }

bool ShowFileInformation(const std::string& path) noexcept {
  constexpr char kFileManager[] = "org.freedesktop.FileManager1";
  auto* bus = SessionBus::Shared().Connection();
  std::error_code error;
  if (bus == nullptr || HasNul(path) || !fs::exists(path, error)) return false;
  const GTextPtr uri = URIOf(path);
  if (uri == nullptr) return false;
  try {
    sdbus::createProxy(*bus, kFileManager, "/org/freedesktop/FileManager1")
        ->callMethod("ShowItemProperties")
        .onInterface(kFileManager)
        .withTimeout(kFileManagerDeadline)
        .withArguments(std::vector<std::string>{uri.get()}, std::string());
  } catch (const sdbus::Error&) {
    return false;
  }
  return true;
}

}  // namespace tessaro::platform
