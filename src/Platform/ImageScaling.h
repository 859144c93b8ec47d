#pragma once

#include <string>

namespace tessaro::platform {

// A picture file that was written, or why there is none.
struct WrittenPicture {
  std::string path;     // empty when nothing was written
  std::string failure;  // for the log
};

// Writes a copy of an image that is at most so many pixels wide and high; 0 or less sets no limit. It is never
// enlarged, and turned the way that it is shown. Colours become sRGB, other metadata is left out, alpha and the frames
// of animations are kept.
//
// `target` is a file, which is replaced at once and completely, in the format of its extension where that can be
// written (png, jpg, jpeg, gif, webp, tif, tiff), otherwise in the source's; or a folder that is there, where the copy
// is called like the source, with a number if that is taken. An image of a format that can't be written becomes a PNG,
// or a JPEG where it is a photo's. One that fits already is copied as it is.
//
// Any thread; waits for at most half a minute.
[[nodiscard]] WrittenPicture ScaleImage(const std::string& source, const std::string& target, int maxWidth,
                                        int maxHeight) noexcept;

}  // namespace tessaro::platform
