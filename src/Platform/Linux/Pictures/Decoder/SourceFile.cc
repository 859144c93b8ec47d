#include "Platform/Linux/Pictures/Decoder/SourceFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "Platform/Linux/Pictures/Decoder/DecoderModules.h"

namespace tessaro::platform {

namespace {

constexpr std::int64_t kMostPixels = std::int64_t{1} << 28;
constexpr int kLargestDrawing = 100000;
// Below this, starting threads and compiling vector code takes longer than the work.
constexpr std::int64_t kPixelsWorthThreads = std::int64_t{1} << 19;

// "VipsForeignLoadJpegSource" → "jpeg"
std::string FormatOf(const char* loader) {
  std::string_view name = loader;
  constexpr std::string_view kBefore = "VipsForeignLoad";
  constexpr std::string_view kAfter = "Source";
  if (name.starts_with(kBefore)) name.remove_prefix(kBefore.size());
  if (name.ends_with(kAfter)) name.remove_suffix(kAfter.size());
  std::string format(name);
  std::transform(format.begin(), format.end(), format.begin(), g_ascii_tolower);
  return format == "nsgif" ? "gif" : format;
}

}  // namespace

std::string VipsFailure() {
  std::string text = vips_error_buffer();
  vips_error_clear();
  while (!text.empty() && text.back() == '\n') text.pop_back();
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text.empty() ? "unknown" : text;
}

Result<SourceFile> SourceFile::Open(const std::string& path) {
  FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (!file || fstat(file.get(), &status) != 0) return Fail(errno, std::strerror(errno));
  if (!S_ISREG(status.st_mode)) return Fail("not a regular file");
  return SourceFile(std::move(file));
}

Result<void> SourceFile::ReadHeader() {
  LoadDecoderFor(file_.get());
  source_.reset(vips_source_new_from_descriptor(file_.get()));
  const char* loader = source_ ? vips_foreign_find_load_source(source_.get()) : nullptr;
  if (loader != nullptr) format_ = FormatOf(loader);
  const VipsImagePtr image(
      loader == nullptr ? nullptr
                        : vips_image_new_from_source(source_.get(), "", "access", VIPS_ACCESS_SEQUENTIAL, nullptr));
  if (!image) return Fail(VipsFailure());
  width_ = vips_image_get_width(image.get());
  height_ = vips_image_get_height(image.get());
  frames_ = std::max(1, vips_image_get_n_pages(image.get()));
  orientation_ = vips_image_get_orientation(image.get());
  hasAlpha_ = vips_image_hasalpha(image.get());
  hasProfile_ = vips_image_get_typeof(image.get(), VIPS_META_ICC_NAME) != 0;
  const std::int64_t pixels = std::int64_t{width_} * height_ * frames_;
  if (pixels < kPixelsWorthThreads) vips_concurrency_set(1);
  // A vector image is drawn in the size that is asked for; a huge one of its own is a sign of an attack.
  const bool isReasonable = isVector() ? std::max(width_, height_) <= kLargestDrawing : pixels <= kMostPixels;
  if (!isReasonable) return Fail("too many pixels");
  return {};
}

SourceFile::Size SourceFile::ShownSize() const {
  return orientation_ >= 5 ? Size{height_, width_} : Size{width_, height_};
}

double SourceFile::FactorFor(const Fit& fit) const {
  const Size shown = ShownSize();
  return std::max(static_cast<double>(shown.width) / fit.maxWidth, static_cast<double>(shown.height) / fit.maxHeight);
}

VipsImagePtr SourceFile::Decode(const Fit& fit) const {
  // Without an embedded profile the colours are sRGB already; a conversion would shift them.
  const char* profile = hasProfile_ ? "srgb" : nullptr;
  // The operation's own argument "fail_on" does not reach the loader.
  const std::string options =
      std::string(fit.mustBeWhole ? "fail_on=truncated" : "fail_on=none") + (fit.allFrames ? ",n=-1" : "");
  VipsImage* image = nullptr;
  const double factor = FactorFor(fit);
  if (format_ != "jpeg" || factor < 2) {
    vips_thumbnail_source(source_.get(), &image, fit.maxWidth, "height", fit.maxHeight, "size", fit.size,
                          "export_profile", profile, "option_string", options.c_str(), nullptr);
    return VipsImagePtr(image);
  }
  // libjpeg shrinks while decoding; the operation on its own would ask for twice as many pixels in each direction.
  const int shrink = factor >= 8 ? 8 : factor >= 4 ? 4 : 2;
  const VipsImagePtr loaded(vips_image_new_from_source(source_.get(), options.c_str(), "access", VIPS_ACCESS_SEQUENTIAL,
                                                       "shrink", shrink, nullptr));
  if (!loaded) return nullptr;
  const auto shrunk = [factor](int length) { return std::max(1, static_cast<int>(std::lround(length / factor))); };
  const Size shown = ShownSize();
  vips_thumbnail_image(loaded.get(), &image, shrunk(shown.width), "height", shrunk(shown.height), "size",
                       VIPS_SIZE_FORCE, "export_profile", profile, nullptr);
  return VipsImagePtr(image);
}

}  // namespace tessaro::platform
