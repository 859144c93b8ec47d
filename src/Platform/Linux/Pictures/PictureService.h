#pragma once

#include "Platform/ImageScaling.h"
#include "Platform/Linux/Pictures/Decoder/PictureJob.h"

namespace tessaro::platform {

// Has the job done by TessaroPictures, the program beside the module, which is started when it is first needed and
// ends with this process. Any thread; waits for the answer.
[[nodiscard]] WrittenPicture HaveDone(const PictureJob& job) noexcept;

}  // namespace tessaro::platform
