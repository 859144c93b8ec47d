#include "Platform/Common/PictureTarget.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <system_error>

#include "Base/TextPieces.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

// The first entry of a format has its usual extension. WebP is last.
constexpr std::array kFormats = {
    PictureFormat{".jpg", "jpeg"},
    PictureFormat{".jpeg", "jpeg"},
    PictureFormat{".png", "png", true},
    PictureFormat{".gif", "gif", true, true},
    PictureFormat{".tiff", "tiff", true},
    PictureFormat{".tif", "tiff", true},
    PictureFormat{".webp", "webp", true, true},
};

template <typename Condition>
const PictureFormat* FormatWhere(WebP webP, Condition condition) {
  const auto* end = webP == WebP::Written ? kFormats.end() : kFormats.end() - 1;
  const auto* found = std::find_if(kFormats.begin(), end, condition);
  return found != end ? found : nullptr;
}

fs::path UniquePath(const fs::path& wanted) {
  fs::path path = wanted;
  std::error_code error;
  for (int number = 2; fs::exists(fs::symlink_status(path, error)); ++number) {
    path.replace_filename(wanted.stem().native() + " " + std::to_string(number) + wanted.extension().native());
  }
  return path;
}

}  // namespace

PictureTarget PictureTargetOf(const fs::path& source, const fs::path& target, std::string_view sourceFormat,
                              bool isPhoto, WebP webP) {
  const auto named = [webP](std::string_view name) {
    return FormatWhere(webP, [name](const PictureFormat& each) { return each.name == name; });
  };
  const auto ofExtension = [webP](const fs::path& path) {
    const std::string extension = LowerCase(path.extension().native());
    return FormatWhere(webP, [&extension](const PictureFormat& each) { return each.extension == extension; });
  };
  const PictureFormat* kept = named(sourceFormat);
  if (kept == nullptr) kept = named(isPhoto ? "jpeg" : "png");
  std::error_code error;
  if (!fs::is_directory(target, error)) {
    const PictureFormat* wanted = ofExtension(target);
    return {target, wanted != nullptr ? wanted : kept};
  }
  fs::path name = source.filename();
  const PictureFormat* present = ofExtension(name);
  if (present == nullptr || present->name != kept->name) name.replace_extension(kept->extension);
  return {UniquePath(target / name), kept};
}

PictureSize SizeWithin(PictureSize size, int maxWidth, int maxHeight) {
  double scale = 1;
  if (maxWidth > 0 && size.width > 0) scale = std::min(scale, static_cast<double>(maxWidth) / size.width);
  if (maxHeight > 0 && size.height > 0) scale = std::min(scale, static_cast<double>(maxHeight) / size.height);
  const auto scaled = [scale](int length) { return std::max(1, static_cast<int>(std::lround(length * scale))); };
  return {scaled(size.width), scaled(size.height)};
}

}  // namespace tessaro::platform
