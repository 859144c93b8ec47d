#pragma once

#include <filesystem>
#include <string_view>

namespace tessaro::platform {

// A format that picture files can have.
struct PictureFormat {
  std::string_view extension;  // with the dot
  std::string_view name;
  bool hasAlpha = false;
  bool hasFrames = false;
};

struct PictureTarget {
  std::filesystem::path path;
  const PictureFormat* format;
};

struct PictureSize {
  int width = 0;
  int height = 0;

  friend bool operator==(const PictureSize&, const PictureSize&) = default;
};

// Whether the system's library writes WebP.
enum class WebP { Written, ReadOnly };

// The path and the format for a copy of `source`, an image in the format `sourceFormat`: see ImageCopy::target. A
// format that can't be written becomes a PNG, or a JPEG for a photo.
[[nodiscard]] PictureTarget PictureTargetOf(const std::filesystem::path& source, const std::filesystem::path& target,
                                            std::string_view sourceFormat, bool isPhoto, WebP webP);

// The largest size of the same shape within the limits, and not larger than `size`. 0 or less sets no limit.
[[nodiscard]] PictureSize SizeWithin(PictureSize size, int maxWidth, int maxHeight);

}  // namespace tessaro::platform
