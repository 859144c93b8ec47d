#pragma once

#include <filesystem>
#include <string>
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

// Where a copy of `source`, whose format has the name `sourceFormat`, goes: see ImageCopy::target. A format that can't
// be written becomes a PNG, or a JPEG where the picture is a photo's.
[[nodiscard]] PictureTarget PictureTargetOf(const std::filesystem::path& source, const std::filesystem::path& target,
                                            std::string_view sourceFormat, bool isPhoto);

// The largest size of the same shape within the limits, and not larger than `size`. A limit of 0 or less is none.
[[nodiscard]] PictureSize SizeWithin(PictureSize size, int maxWidth, int maxHeight);

}  // namespace tessaro::platform
