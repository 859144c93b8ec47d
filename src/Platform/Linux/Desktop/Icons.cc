#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <system_error>

#include "Base/Lifetime.h"
#include "Platform/Applications.h"
#include "Platform/Linux/Base/KeyFiles.h"
#include "Platform/Linux/Base/Paths.h"
#include "Platform/Linux/Desktop/DesktopEntries.h"
#include "Platform/StandardDirectories.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

// ---- Themes

constexpr char kThemeGroup[] = "Icon Theme";
constexpr int kLargestSize = 1 << 20;  // of an icon in a theme: sums of larger ones overflow

struct SizedFolder {
  std::string name;
  int least = 0;
  int most = 0;
};

struct IconTheme {
  std::string name;
  std::vector<SizedFolder> folders;
};

std::vector<fs::path> Bases() {
  std::vector<fs::path> bases = {DataHome() / "icons", HomeDirectory() / ".icons"};
  for (const fs::path& directory : DataDirectories()) bases.push_back(directory / "icons");
  return bases;
}

bool IsFile(const fs::path& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

int NumberIn(const GKeyFilePtr& keys, const std::string& group, const char* key, int otherwise) {
  const int number = g_key_file_get_integer(keys.get(), group.c_str(), key, nullptr);
  return number > 0 ? std::min(number, kLargestSize) : otherwise;
}

SizedFolder FolderOf(const GKeyFilePtr& keys, const std::string& name) {
  const int size = NumberIn(keys, name, "Size", 0);
  const std::string type = TextIn(keys.get(), name.c_str(), "Type");
  if (type == "Fixed") return {name, size, size};
  if (type == "Scalable") return {name, NumberIn(keys, name, "MinSize", size), NumberIn(keys, name, "MaxSize", size)};
  const int threshold = NumberIn(keys, name, "Threshold", 2);
  return {name, size - threshold, size + threshold};
}

std::vector<IconTheme> ReadIconThemes() {
  std::vector<IconTheme> themes;
  for (const Theme& theme : ReadThemes({"gtk-icon-theme-name", kThemeGroup, Bases(), {"Adwaita", "hicolor"}})) {
    IconTheme& icons = themes.emplace_back(IconTheme{theme.name, {}});
    if (theme.parts.empty()) continue;
    const GKeyFilePtr& index = theme.parts.front().index;
    for (const std::string& folder : ListIn(index.get(), kThemeGroup, "Directories")) {
      icons.folders.push_back(FolderOf(index, folder));
    }
  }
  return themes;
}

// The themes to search, in order. Read once: they rarely change and have hundreds of folders.
const std::vector<IconTheme>& IconThemes() {
  static Forever<std::vector<IconTheme>> themes(ReadIconThemes());
  return *themes;
}

// Smaller is better. Enlarging an icon is worse than shrinking one.
int Misfit(const SizedFolder& folder, int size) {
  if (folder.most < size) return 10000 + size - folder.most;
  return std::max(folder.least - size, 0);
}

fs::path FileIn(const fs::path& folder, const std::string& name) {
  for (const char* extension : {".png", ".svg"}) {
    if (fs::path file = folder / (name + extension); IsFile(file)) return file;
  }
  return {};
}

fs::path FileOf(const IconTheme& theme, const std::string& name, int size) {
  fs::path best;
  int least = std::numeric_limits<int>::max();
  for (const fs::path& base : Bases()) {
    std::error_code error;
    if (!fs::is_directory(base / theme.name, error)) continue;
    for (const SizedFolder& folder : theme.folders) {
      const int misfit = Misfit(folder, size);
      if (misfit >= least) continue;
      fs::path file = FileIn(base / theme.name / folder.name, name);
      if (file.empty()) continue;
      best = std::move(file);
      least = misfit;
    }
  }
  return best;
}

// The file of the user's icon theme that suits `size` best. Empty when no theme has an icon of that name.
fs::path ThemedIcon(const std::string& name, int size) {
  if (name.empty() || name.find('/') != std::string::npos) return {};
  for (const IconTheme& theme : IconThemes()) {
    if (fs::path file = FileOf(theme, name, size); !file.empty()) return file;
  }
  for (const fs::path& directory : DataDirectories()) {
    if (fs::path file = FileIn(directory / "pixmaps", name); !file.empty()) return file;
  }
  return {};
}

// ---- Pictures

using PixbufPtr = GObjectPtr<GdkPixbuf>;

constexpr int kLargestIcon = 1024;
constexpr std::uintmax_t kLongestIconFile = 16 << 20;

PixbufPtr Load(const fs::path& file, int size) {
  std::error_code error;
  if (!fs::is_regular_file(file, error) || fs::file_size(file, error) > kLongestIconFile || error) return nullptr;
  return PixbufPtr(gdk_pixbuf_new_from_file_at_size(file.c_str(), size, size, nullptr));
}

// Centres the image in a transparent square.
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

std::vector<std::uint8_t> IconOfApplication(std::string_view identifier, int size) noexcept {
  const DesktopEntryPtr application = FindDesktopEntry(identifier);
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

}  // namespace tessaro::platform
