#pragma once

#include <vips/vips.h>

#include <cstdint>
#include <string>
#include <utility>

#include "Base/Result.h"
#include "Platform/Common/FileDescriptor.h"
#include "Platform/Linux/Base/GLibOwners.h"

namespace tessaro::platform {

using VipsImagePtr = GObjectPtr<VipsImage>;
using VipsSourcePtr = GObjectPtr<VipsSource>;

// The message of the last failure of vips, in one line.
[[nodiscard]] std::string VipsFailure();

// An image file, and its properties that need no decoding.
class SourceFile {
 public:
  [[nodiscard]] static Result<SourceFile> Open(const std::string& path);

  explicit SourceFile(FileDescriptor file) : file_(std::move(file)) {}

  [[nodiscard]] int descriptor() const { return file_.get(); }

  // An image that is cut off either fails to be decoded, or is decoded as far as it goes.
  enum class Missing : std::uint8_t { Fails, StaysBlank };
  // Fails when the file is no image, with an empty format(), and when the image is broken or has too many pixels.
  [[nodiscard]] Result<void> ReadHeader(Missing missing);

  // The image, turned as its orientation says, in sRGB, and made to fit into so many pixels.
  struct Fit {
    int maxWidth = VIPS_MAX_COORD;
    int maxHeight = VIPS_MAX_COORD;
    VipsSize size = VIPS_SIZE_DOWN;
    bool allFrames = false;
  };
  // Once, after the header. Empty when decoding fails: see VipsFailure().
  [[nodiscard]] VipsImagePtr Decode(const Fit& fit);

  struct Size {
    int width;
    int height;
  };
  // The size of the first frame, with its orientation applied.
  [[nodiscard]] Size shownSize() const { return isTurned() ? Size{height_, width_} : Size{width_, height_}; }
  [[nodiscard]] int frames() const { return frames_; }
  [[nodiscard]] bool hasAlpha() const { return hasAlpha_; }
  // By the name of the loader: "jpeg", "png", "svg", "pdf" …
  [[nodiscard]] const std::string& format() const { return format_; }
  // Drawn in any size without loss.
  [[nodiscard]] bool isVector() const { return format_ == "svg" || format_ == "pdf"; }

 private:
  [[nodiscard]] bool isTurned() const { return orientation_ >= 5; }
  // How many times the image is larger than the size it has to fit.
  [[nodiscard]] double FactorFor(const Fit& fit) const;
  // Decoders of other formats make smaller images themselves, or need all of the file at once.
  [[nodiscard]] bool isReadByLines() const { return format_ == "jpeg" || format_ == "png"; }
  [[nodiscard]] const char* ExportProfile() const;
  [[nodiscard]] VipsImagePtr Load(int shrink) const;
  [[nodiscard]] VipsImagePtr DecodeLines(double factor);

  FileDescriptor file_;
  VipsSourcePtr source_;
  // The image that the header was read from; pixels are not decoded yet.
  VipsImagePtr image_;
  Missing missing_ = Missing::Fails;
  std::string format_;
  int width_ = 0;
  int height_ = 0;
  int frames_ = 1;
  int orientation_ = 1;  // as in EXIF: 1 for an image that is shown as it is stored
  bool hasAlpha_ = false;
  bool hasProfile_ = false;
};

}  // namespace tessaro::platform
