#pragma once

#include "Platform/ImageScaling.h"
#include "Platform/Linux/Pictures/Decoder/PictureJob.h"

namespace tessaro::platform {

// What the jobs do, in the process that is theirs. Nothing throws.

[[nodiscard]] WrittenPicture MakeScaledCopy(const PictureJob& job);
[[nodiscard]] WrittenPicture MakePreview(const PictureJob& job);

}  // namespace tessaro::platform
