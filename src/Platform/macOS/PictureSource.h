#pragma once

#include <ImageIO/ImageIO.h>

#include <string>
#include <string_view>

#include "Base/Result.h"
#include "Platform/Common/PictureTarget.h"
#include "Platform/macOS/CFRef.h"

namespace tessaro::platform {

// A file that ImageIO can decode. The system decodes in this process; the limits to the pixels are ours.
class PictureSource {
 public:
  explicit PictureSource(const std::string& path);

  // A sentence for the log when the file can't be decoded, or has too many pixels; else empty.
  [[nodiscard]] const std::string& failure() const { return failure_; }

  // As the picture is shown, turned.
  [[nodiscard]] PictureSize size() const { return size_; }
  [[nodiscard]] std::string_view format() const { return format_; }
  [[nodiscard]] bool isPhoto() const { return isPhoto_; }
  [[nodiscard]] std::size_t frames() const;

  // A frame no larger than `size`, in sRGB; with alpha, or on white. Nothing when it can't be decoded.
  [[nodiscard]] CFRef<CGImageRef> Frame(std::size_t index, PictureSize size, bool hasAlpha) const;

  // The properties of a frame that a copied animation keeps.
  [[nodiscard]] CFRef<CFDictionaryRef> FrameProperties(std::size_t index) const;
  [[nodiscard]] CFRef<CFDictionaryRef> Properties() const;

 private:
  void ReadHeader();

  CFRef<CGImageSourceRef> source_;
  std::string failure_;
  PictureSize size_;
  std::string_view format_;
  bool isPhoto_ = false;
};

// Writes frames to `path`, which is replaced at once and completely.
[[nodiscard]] Result<std::string> WritePicture(const std::string& path, const PictureFormat& format,
                                               const PictureSource& source, PictureSize size, std::size_t frames);

// Writes one picture as a PNG.
[[nodiscard]] Result<std::string> WritePNG(const std::string& path, CGImageRef image);

}  // namespace tessaro::platform
