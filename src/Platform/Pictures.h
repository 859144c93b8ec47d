#pragma once

#include <functional>
#include <string>

#include "Base/Result.h"

// Copies of images, and previews of files. Main thread only; nothing throws.
//
// Images may come from strangers. Whatever decodes them has limits to pixels, memory and time, which end the job with
// a failure; on a system without protected decoders that means a process of its own.
namespace tessaro::platform {

// Receives the path of the file that was written, once, on a later turn of the main queue.
using PictureWritten = std::function<void(const Result<std::string>& path)>;

struct ImageCopy {
  std::string source;
  // A file, which is replaced at once and completely, in the format of its extension where that can be written (png,
  // jpg, jpeg, gif, webp, tif, tiff), otherwise in the source's; or an existing folder, where the copy gets the name of
  // the source, with a number if that is taken. An image of a format that can't be written becomes a PNG, or a JPEG
  // where it is a photo's.
  std::string target;
  // In pixels; 0 or less sets no limit.
  int maxWidth = 0;
  int maxHeight = 0;
};

// Writes a copy that is no larger than the limits, turned the way that the image is shown. It is never enlarged.
// Colours become sRGB, other metadata is left out, alpha and the frames of animations are kept. An image that fits, in
// the wanted format, is copied unchanged. Waits for at most two seconds.
[[nodiscard]] Result<std::string> ScaleImage(const ImageCopy& copy) noexcept;

// The same without waiting, for at most ten seconds.
void ScaleImage(const ImageCopy& copy, PictureWritten written) noexcept;

// Writes a PNG that shows the contents of a file: an image, the first page of a PDF, or the beginning of a text. It is
// at most `size` pixels wide and high; smaller images keep their size. `target` is a file, which is replaced at once
// and completely. A preview takes at most ten seconds; slow ones don't hold up others.
void WritePreview(const std::string& source, int size, const std::string& target, PictureWritten written) noexcept;

}  // namespace tessaro::platform
