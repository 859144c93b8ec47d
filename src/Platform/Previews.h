#pragma once

#include <string>

#include "Platform/ImageScaling.h"

namespace tessaro::platform {

// Writes a PNG that shows the contents of a file: an image, the first page of a PDF, or the beginning of a text. It is
// at most `size` pixels wide and high; smaller images keep their size. `target` is a file, which is replaced at once
// and completely. A preview takes at most ten seconds; slow ones don't hold up others. Main thread only.
void WritePreview(const std::string& source, int size, const std::string& target, PictureWritten written) noexcept;

}  // namespace tessaro::platform
