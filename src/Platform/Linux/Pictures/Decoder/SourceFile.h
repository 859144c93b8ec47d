#pragma once

#include <vips/vips.h>

#include <string>

#include "Platform/Common/FileDescriptor.h"
#include "Platform/Linux/Base/GLibOwners.h"

namespace tessaro::platform {

using VipsImagePtr = GObjectPtr<VipsImage>;
using VipsSourcePtr = GObjectPtr<VipsSource>;

// What vips says of its last failure, in one line.
[[nodiscard]] std::string VipsFailure();

// A file with pixels that may be read, and what is known of it without decoding any.
class SourceFile {
 public:
  // failure() is empty when the file can be read. Only regular files can: others may keep their reader for ever.
  explicit SourceFile(const std::string& path);

  [[nodiscard]] const std::string& failure() const { return failure_; }
  [[nodiscard]] int descriptor() const { return file_.get(); }

  // Reads the header. False, with failure(), for what is no image, and for one with more pixels than anybody has.
  [[nodiscard]] bool ReadHeader();

  // The image, turned the way that it is shown, in sRGB, and made to fit into so many pixels.
  struct Fit {
    int maxWidth = VIPS_MAX_COORD;
    int maxHeight = VIPS_MAX_COORD;
    VipsSize size = VIPS_SIZE_DOWN;
    bool mustBeWhole = false;
    bool allFrames = false;
  };
  // Empty when it can't be decoded: VipsFailure() tells.
  [[nodiscard]] VipsImagePtr Decode(const Fit& fit) const;

  // Of its first frame; before it is turned.
  [[nodiscard]] int width() const { return width_; }
  [[nodiscard]] int height() const { return height_; }
  [[nodiscard]] int frames() const { return frames_; }
  // EXIF's, 1 for an image that is shown as it is stored.
  [[nodiscard]] int orientation() const { return orientation_; }
  [[nodiscard]] bool hasAlpha() const { return hasAlpha_; }
  // By the name of the loader: "jpeg", "png", "svg", "pdf" …
  [[nodiscard]] const std::string& format() const { return format_; }
  // Drawn anew in every size.
  [[nodiscard]] bool isVector() const { return format_ == "svg" || format_ == "pdf"; }

 private:
  struct Size {
    int width;
    int height;
  };
  // When it is turned.
  [[nodiscard]] Size ShownSize() const;
  // By how much it is too large.
  [[nodiscard]] double FactorFor(const Fit& fit) const;

  std::string failure_;
  FileDescriptor file_;
  VipsSourcePtr source_;
  std::string format_;
  int width_ = 0;
  int height_ = 0;
  int frames_ = 1;
  int orientation_ = 1;
  bool hasAlpha_ = false;
  bool hasProfile_ = false;
};

}  // namespace tessaro::platform
