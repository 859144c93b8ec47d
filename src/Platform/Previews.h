#pragma once

#include <string>

#include "Platform/ImageScaling.h"

namespace tessaro::platform {

// Writes a PNG that shows what is in a file: an image, the first page of a PDF, or the beginning of a text. It is at
// most `size` pixels wide and high; images that are smaller keep their size. `target` is a file, which is replaced at
// once and completely.
//
// Any thread; waits for at most half a minute.
[[nodiscard]] WrittenPicture WritePreview(const std::string& source, int size, const std::string& target) noexcept;

}  // namespace tessaro::platform
