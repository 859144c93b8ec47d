#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "Platform/Linux/Pictures/Decoder/ImageWriting.h"
#include "Platform/Linux/Pictures/Decoder/Picture.h"
#include "Platform/Linux/Pictures/Decoder/SourceFile.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

struct FileFormat {
  const char* extension;
  const char* format;
  const char* saver;  // with options for mail
  bool hasAlpha;
  bool hasFrames;
};

constexpr char kSaveJPEG[] = ".jpg[Q=85,strip]";
constexpr char kSaveTIFF[] = ".tif[compression=deflate,strip]";

// The first entry of a format has its usual extension.
constexpr std::array kFormats = {
    FileFormat{".jpg", "jpeg", kSaveJPEG, false, false},          FileFormat{".jpeg", "jpeg", kSaveJPEG, false, false},
    FileFormat{".png", "png", ".png[strip]", true, false},        FileFormat{".gif", "gif", ".gif[strip]", true, true},
    FileFormat{".webp", "webp", ".webp[Q=85,strip]", true, true}, FileFormat{".tiff", "tiff", kSaveTIFF, true, false},
    FileFormat{".tif", "tiff", kSaveTIFF, true, false},
};

const FileFormat* FormatOfExtension(const fs::path& path) {
  const GTextPtr extension(g_ascii_strdown(path.extension().c_str(), -1));
  for (const FileFormat& each : kFormats) {
    if (each.extension == std::string_view(extension.get())) return &each;
  }
  return nullptr;
}

const FileFormat& FormatNamed(std::string_view name) {
  for (const FileFormat& each : kFormats) {
    if (each.format == name) return each;
  }
  return FormatNamed("png");
}

const FileFormat& FormatFor(const SourceFile& source) {
  // A camera's picture would be far too large as a PNG.
  if (source.format() == "heif" && !source.hasAlpha()) return FormatNamed("jpeg");
  return FormatNamed(source.format());
}

fs::path UniquePath(const fs::path& wanted) {
  fs::path path = wanted;
  std::error_code error;
  for (int number = 2; fs::exists(fs::symlink_status(path, error)); ++number) {
    path = wanted;
    path.replace_filename(wanted.stem().native() + " " + std::to_string(number) + wanted.extension().native());
  }
  return path;
}

struct Target {
  fs::path path;
  const FileFormat* format;
};

Target TargetOf(const PictureJob& job, const SourceFile& source) {
  const FileFormat& kept = FormatFor(source);
  std::error_code error;
  if (!fs::is_directory(job.target, error)) {
    const FileFormat* named = FormatOfExtension(job.target);
    return {job.target, named != nullptr ? named : &kept};
  }
  fs::path name = fs::path(job.source).filename();
  if (FormatOfExtension(name) == nullptr || FormatOfExtension(name)->saver != kept.saver) {
    name.replace_extension(kept.extension);
  }
  return {UniquePath(job.target / name), &kept};
}

bool Fits(const PictureJob& job, const SourceFile& source) {
  const bool isTurned = source.orientation() >= 5;
  const int width = isTurned ? source.height() : source.width();
  const int height = isTurned ? source.width() : source.height();
  return (job.maxWidth <= 0 || width <= job.maxWidth) && (job.maxHeight <= 0 || height <= job.maxHeight);
}

VipsImagePtr Shrunk(const PictureJob& job, const SourceFile& source, bool allFrames) {
  return source.Decode({.maxWidth = job.maxWidth > 0 ? job.maxWidth : VIPS_MAX_COORD,
                        .maxHeight = job.maxHeight > 0 ? job.maxHeight : VIPS_MAX_COORD,
                        .mustBeWhole = true,
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
  if (const auto header = source->ReadHeader(); !header) return tl::unexpected(header.error());
  const Target target = TargetOf(job, *source);
  const bool isKept = source->format() == target.format->format;
  if (isKept && Fits(job, *source)) return Copied(*source, target.path);
  const bool allFrames = source->frames() > 1 && target.format->hasFrames && !source->isVector();
  VipsImagePtr image = Shrunk(job, *source, allFrames);
  if (!target.format->hasAlpha) image = OnWhite(std::move(image));
  return SaveImage(image, target.format->saver, target.path);
}

}  // namespace tessaro::platform
