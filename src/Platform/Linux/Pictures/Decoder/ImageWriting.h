#pragma once

#include <string>
#include <string_view>

#include "Base/Result.h"
#include "Platform/Linux/Pictures/Decoder/SourceFile.h"

namespace tessaro::platform {

// Replaces the file at once and completely, and returns its path.
[[nodiscard]] Result<std::string> WritePictureFile(const std::string& path, std::string_view contents);

// The same with an image; `format` is an extension with options, as vips takes it. An empty image is a failure of vips.
[[nodiscard]] Result<std::string> SaveImage(const VipsImagePtr& image, const char* format, const std::string& path);

}  // namespace tessaro::platform
