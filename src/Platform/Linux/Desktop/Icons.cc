#include <gdk-pixbuf/gdk-pixbuf.h>

#include <filesystem>
#include <system_error>

#include "Platform/Applications.h"
#include "Platform/Linux/Desktop/DesktopEntries.h"
#include "Platform/Linux/Desktop/IconTheme.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

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
