#include "Platform/Linux/Pictures/Decoder/SourceFile.h"

#include <dlfcn.h>
#include <gmodule.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <string_view>

#include "Base/TextPieces.h"

// After vips.h, which the header needs.
#include <vips/vector.h>

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
  std::string format = LowerCase(name);
  return format == "nsgif" ? "gif" : format;
}

std::string FailOn(bool isBroken) { return isBroken ? "fail_on=truncated" : "fail_on=none"; }

// ---- Modules

// A signature in a file's first bytes, and the module that reads such files.
struct DecoderModule {
  std::size_t offset;
  std::string_view signature;
  const char* file;
};
constexpr std::array kModules = {DecoderModule{0, "%PDF", "vips-poppler.so"}, DecoderModule{4, "ftyp", "vips-heif.so"}};

// Beside the library that this program is linked to.
std::filesystem::path ModuleFolder() {
  Dl_info library{};
  if (dladdr(reinterpret_cast<const void*>(vips_init), &library) == 0) return {};
  const std::string name = "vips-modules-" + std::to_string(vips_version(0)) + "." + std::to_string(vips_version(1));
  return std::filesystem::path(library.dli_fname).parent_path() / name;
}

// vips has decoders in modules of their own, with large libraries behind them. Loading all of them at the start would
// take half of it; ImageMagick's and OpenSlide's must never be used. A job loads the one that its file needs.
void LoadDecoderFor(int file) {
  std::array<char, 16> start{};
  const ssize_t length = pread(file, start.data(), start.size(), 0);
  const std::string_view bytes(start.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
  for (const DecoderModule& module : kModules) {
    if (bytes.size() < module.offset || !bytes.substr(module.offset).starts_with(module.signature)) continue;
    // Stays for as long as the job's process. Without it the file counts as one that is no image.
    static_cast<void>(g_module_open((ModuleFolder() / module.file).c_str(), G_MODULE_BIND_LAZY));
  }
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
  return OpenToRead(path).map([](FileDescriptor file) { return SourceFile(std::move(file)); });
}

Result<void> SourceFile::ReadHeader(Missing missing) {
  missing_ = missing;
  LoadDecoderFor(file_.get());
  source_.reset(vips_source_new_from_descriptor(file_.get()));
  const char* loader = source_ ? vips_foreign_find_load_source(source_.get()) : nullptr;
  if (loader != nullptr) format_ = FormatOf(loader);
  if (loader != nullptr) image_ = Load(1);
  if (!image_) return Fail(VipsFailure());
  width_ = vips_image_get_width(image_.get());
  height_ = vips_image_get_height(image_.get());
  frames_ = std::max(1, vips_image_get_n_pages(image_.get()));
  orientation_ = vips_image_get_orientation(image_.get());
  hasAlpha_ = vips_image_hasalpha(image_.get());
  hasProfile_ = vips_image_get_typeof(image_.get(), VIPS_META_ICC_NAME) != 0;
  const std::int64_t pixels = std::int64_t{width_} * height_ * frames_;
  const bool isSmall = pixels < kPixelsWorthThreads;
  if (isSmall) vips_concurrency_set(1);
  // Only in the process of a job: pages with compiled code are shared with the processes that are forked later.
  vips_vector_set_enabled(isSmall ? FALSE : TRUE);
  // A vector image is drawn in the size that is asked for; a huge one of its own is a sign of an attack.
  const bool isReasonable = isVector() ? std::max(width_, height_) <= kLargestDrawing : pixels <= kMostPixels;
  if (!isReasonable) return Fail("too many pixels");
  return {};
}

// Without an embedded profile the colours are sRGB already; a conversion would shift them.
const char* SourceFile::ExportProfile() const { return hasProfile_ ? "srgb" : nullptr; }

double SourceFile::FactorFor(const Fit& fit) const {
  const Size shown = shownSize();
  return std::max(static_cast<double>(shown.width) / fit.maxWidth, static_cast<double>(shown.height) / fit.maxHeight);
}

VipsImagePtr SourceFile::Load(int shrink) const {
  std::string options = FailOn(missing_ == Missing::Fails && isReadByLines());
  if (shrink > 1) options += ",shrink=" + std::to_string(shrink);
  return VipsImagePtr(
      vips_image_new_from_source(source_.get(), options.c_str(), "access", VIPS_ACCESS_SEQUENTIAL, nullptr));
}

VipsImagePtr SourceFile::Decode(const Fit& fit) {
  const double factor = FactorFor(fit);
  if (isReadByLines() && factor > 1) return DecodeLines(factor);
  image_.reset();
  // The operation's own argument "fail_on" does not reach the loader.
  const std::string options = FailOn(missing_ == Missing::Fails) + (fit.allFrames ? ",n=-1" : "");
  VipsImage* image = nullptr;
  vips_thumbnail_source(source_.get(), &image, fit.maxWidth, "height", fit.maxHeight, "size", fit.size,
                        "export_profile", ExportProfile(), "option_string", options.c_str(), nullptr);
  return VipsImagePtr(image);
}

VipsImagePtr SourceFile::DecodeLines(double factor) {
  // libjpeg shrinks while decoding, to the power of two above the size.
  const int shrink = format_ != "jpeg" || factor < 2 ? 1 : factor >= 8 ? 8 : factor >= 4 ? 4 : 2;
  if (shrink > 1) image_ = Load(shrink);
  const VipsImagePtr image = std::move(image_);
  if (!image) return nullptr;
  const auto reduced = [factor](int length) { return std::max(1, static_cast<int>(std::lround(length / factor))); };
  const int width = reduced(width_);
  const int height = reduced(height_);
  VipsImage* finished = nullptr;
  vips_thumbnail_image(image.get(), &finished, isTurned() ? height : width, "height", isTurned() ? width : height,
                       "size", VIPS_SIZE_FORCE, "export_profile", ExportProfile(), nullptr);
  return VipsImagePtr(finished);
}

}  // namespace tessaro::platform
