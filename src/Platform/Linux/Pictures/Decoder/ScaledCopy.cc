#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "Platform/Common/PictureTarget.h"
#include "Platform/Linux/Pictures/Decoder/ImageWriting.h"
#include "Platform/Linux/Pictures/Decoder/Picture.h"
#include "Platform/Linux/Pictures/Decoder/SourceFile.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

PictureTarget TargetOf(const PictureJob& job, const SourceFile& source) {
  const bool isPhoto = source.format() == "heif" && !source.hasAlpha();
  return PictureTargetOf(job.source, job.target, source.format(), isPhoto, WebP::Written);
}

// The extension with vips' options for mail.
std::string SaverOf(const PictureFormat& format) {
  const bool isLossy = format.name == "jpeg" || format.name == "webp";
  const char* options = isLossy ? "[Q=85,strip]" : format.name == "tiff" ? "[compression=deflate,strip]" : "[strip]";
  return std::string(format.extension) + options;
}

bool Fits(const PictureJob& job, const SourceFile& source) {
  const bool isTurned = source.orientation() >= 5;
  const int width = isTurned ? source.height() : source.width();
  const int height = isTurned ? source.width() : source.height();
  return (job.maxWidth <= 0 || width <= job.maxWidth) && (job.maxHeight <= 0 || height <= job.maxHeight);
}

VipsImagePtr Shrunk(const PictureJob& job, SourceFile& source, bool allFrames) {
  return source.Decode({.maxWidth = job.maxWidth > 0 ? job.maxWidth : VIPS_MAX_COORD,
                        .maxHeight = job.maxHeight > 0 ? job.maxHeight : VIPS_MAX_COORD,
                        .allFrames = allFrames});
}

// JPEG has no alpha: clear pixels would get the colour that they happen to have.
VipsImagePtr OnWhite(VipsImagePtr image) {
  if (!image || !vips_image_hasalpha(image.get())) return image;
  VipsImage* flat = nullptr;
  const std::array<double, 3> white = {255, 255, 255};
  VipsArrayDouble* background = vips_array_double_new(white.data(), static_cast<int>(white.size()));
  vips_flatten(image.get(), &flat, "background", background, nullptr);
  vips_area_unref(VIPS_AREA(background));
  return VipsImagePtr(flat);
}

Result<std::string> Copied(const SourceFile& source, const fs::path& target) {
  std::string contents;
  std::array<char, 65536> piece;
  ssize_t length = 0;
  lseek(source.descriptor(), 0, SEEK_SET);
  while ((length = TEMP_FAILURE_RETRY(read(source.descriptor(), piece.data(), piece.size()))) > 0) {
    contents.append(piece.data(), static_cast<std::size_t>(length));
  }
  if (length < 0) return Fail(errno, std::strerror(errno));
  return WritePictureFile(target, contents);
}

}  // namespace

Result<std::string> MakeScaledCopy(const PictureJob& job) {
  auto source = SourceFile::Open(job.source);
  if (!source) return tl::unexpected(source.error());
  const auto header = source->ReadHeader(SourceFile::Missing::Fails);
  if (!header) return tl::unexpected(header.error());
  const PictureTarget target = TargetOf(job, *source);
  const bool isKept = source->format() == target.format->name;
  if (isKept && Fits(job, *source)) return Copied(*source, target.path);
  const bool allFrames = source->frames() > 1 && target.format->hasFrames && !source->isVector();
  VipsImagePtr image = Shrunk(job, *source, allFrames);
  if (!target.format->hasAlpha) image = OnWhite(std::move(image));
  return SaveImage(image, SaverOf(*target.format).c_str(), target.path);
}

}  // namespace tessaro::platform
