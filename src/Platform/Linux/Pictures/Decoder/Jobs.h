#pragma once

#include <string>

#include "Base/Result.h"
#include "Platform/Linux/Pictures/Decoder/PictureJob.h"

namespace tessaro::platform {

// The jobs, in a process of their own. They return the path of the file that they wrote. Nothing throws.

[[nodiscard]] Result<std::string> MakeScaledCopy(const PictureJob& job);
[[nodiscard]] Result<std::string> MakePreview(const PictureJob& job);

}  // namespace tessaro::platform
