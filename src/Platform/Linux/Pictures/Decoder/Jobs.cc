#include "Platform/Linux/Pictures/Decoder/Jobs.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <utility>

#include "Platform/Common/PictureTarget.h"
#include "Platform/Files.h"
#include "Platform/Linux/Pictures/Decoder/SourceFile.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

// Replaces the file at once and completely, and returns its path.
Result<std::string> WritePictureFile(const std::string& path, std::string_view contents) {
  const auto written = ReplaceTransientFile(path, contents);
  if (!written) return Fail(written.error().code, path + ": " + written.error().message);
  return path;
}

// The same with an image; `format` is an extension with options, as vips takes it. An empty image is a failure of vips.
Result<std::string> SaveImage(const VipsImagePtr& image, const char* format, const std::string& path) {
  void* bytes = nullptr;
  std::size_t size = 0;
  if (!image || vips_image_write_to_buffer(image.get(), format, &bytes, &size, nullptr) != 0)
    return Fail(VipsFailure());
  const GTextPtr owner(static_cast<char*>(bytes));
  return WritePictureFile(path, {owner.get(), size});
}

// ---- Scaled copies

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
  const auto [width, height] = source.shownSize();
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

// ---- Previews

constexpr char kPreviewFormat[] = ".png[strip]";
constexpr std::size_t kMostText = 16384;
constexpr std::size_t kMostLine = 400;
constexpr int kMostLines = 70;
// Width to height, as of a sheet of paper.
constexpr double kPageShape = 0.75;
constexpr double kMargin = 0.06;
constexpr double kLinesPerPage = 55;

std::string Beginning(const SourceFile& file) {
  std::string text(kMostText, '\0');
  const ssize_t length = TEMP_FAILURE_RETRY(pread(file.descriptor(), text.data(), text.size(), 0));
  text.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
  return text;
}

std::string Converted(const std::string& bytes, const char* encoding) {
  std::size_t read = 0;
  std::size_t written = 0;
  const GTextPtr text(g_convert_with_fallback(bytes.data(), static_cast<gssize>(bytes.size()), "UTF-8", encoding, "?",
                                              &read, &written, nullptr));
  return text ? std::string(text.get(), written) : std::string();
}

bool HasControls(const std::string& bytes) {
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte < ' ' && byte != '\t' && byte != '\n' && byte != '\r' && byte != '\f') || byte == 0x7f) return true;
  }
  return false;
}

// Without a last character that was cut off.
std::string ValidBeginning(const std::string& bytes) {
  const char* end = nullptr;
  g_utf8_validate(bytes.data(), static_cast<gssize>(bytes.size()), &end);
  return {bytes.data(), end};
}

// Empty for anything but text.
std::string AsUtf8(std::string bytes) {
  if (bytes.starts_with("\xff\xfe") || bytes.starts_with("\xfe\xff")) {
    bytes.resize(bytes.size() / 2 * 2);
    bytes = Converted(bytes, "UTF-16");
  }
  if (bytes.starts_with("\xef\xbb\xbf")) bytes.erase(0, 3);
  if (HasControls(bytes)) return {};
  constexpr std::size_t kLongestCut = 3;
  std::string valid = ValidBeginning(bytes);
  return bytes.size() - valid.size() <= kLongestCut ? valid : Converted(bytes, "WINDOWS-1252");
}

// The lines that fit on a page, each cut to a reasonable length.
std::string PageOf(const std::string& text) {
  std::string page;
  std::size_t start = 0;
  for (int line = 0; line < kMostLines && start < text.size(); ++line) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    page += ValidBeginning(text.substr(start, std::min(end - start, kMostLine))) + "\n";
    start = end + 1;
  }
  return page;
}

VipsImagePtr DrawnText(const std::string& text, int size) {
  const GTextPtr markup(g_markup_escape_text(text.data(), static_cast<gssize>(text.size())));
  const int width = std::max(1, static_cast<int>(size * kPageShape));
  const int margin = static_cast<int>(size * kMargin);
  // A line of 10-point text is about 12 points high; an inch has 72 points.
  const int resolution = std::max(10, static_cast<int>(size / kLinesPerPage / 12 * 72));
  VipsImage* made = nullptr;
  if (vips_text(&made, markup.get(), "font", "Sans 10", "width", std::max(1, width - 2 * margin), "dpi", resolution,
                "wrap", VIPS_TEXT_WRAP_WORD_CHAR, nullptr) != 0) {
    return nullptr;
  }
  const VipsImagePtr letters(made);
  const VipsImagePtr ink([&letters] {
    VipsImage* inverted = nullptr;
    vips_invert(letters.get(), &inverted, nullptr);
    return inverted;
  }());
  VipsImage* page = nullptr;
  if (ink) vips_embed(ink.get(), &page, margin, margin, width, size, "extend", VIPS_EXTEND_WHITE, nullptr);
  return VipsImagePtr(page);
}

VipsImagePtr DrawnImage(SourceFile& file, int size) {
  return file.Decode({size, size, file.isVector() ? VIPS_SIZE_BOTH : VIPS_SIZE_DOWN});
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

Result<std::string> MakePreview(const PictureJob& job) {
  auto file = SourceFile::Open(job.source);
  if (!file) return tl::unexpected(file.error());
  const auto header = file->ReadHeader(SourceFile::Missing::StaysBlank);
  if (header) return SaveImage(DrawnImage(*file, job.maxWidth), kPreviewFormat, job.target);
  // A broken image is not shown as text.
  if (!file->format().empty()) return tl::unexpected(header.error());
  const std::string text = PageOf(AsUtf8(Beginning(*file)));
  if (text.empty()) return Fail("the file is neither an image, nor a PDF, nor a text");
  return SaveImage(DrawnText(text, job.maxWidth), kPreviewFormat, job.target);
}

}  // namespace tessaro::platform
