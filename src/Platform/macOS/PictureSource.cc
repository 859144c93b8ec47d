#include "Platform/macOS/PictureSource.h"

#include <algorithm>
#include <array>
#include <optional>

#include "Platform/Files.h"

namespace tessaro::platform {

namespace {

constexpr double kMostPixels = 100'000'000;
constexpr double kQuality = 0.85;

struct TypeName {
  std::string_view type;
  std::string_view name;
};

constexpr std::array kTypes = {TypeName{"public.jpeg", "jpeg"}, TypeName{"public.png", "png"},
                               TypeName{"com.compuserve.gif", "gif"}, TypeName{"public.tiff", "tiff"}};

std::string_view TypeOf(const PictureFormat& format) {
  const auto* found =
      std::find_if(kTypes.begin(), kTypes.end(), [&format](const TypeName& each) { return each.name == format.name; });
  return found != kTypes.end() ? found->type : "public.png";
}

int Number(CFDictionaryRef properties, CFStringRef key) {
  int number = 0;
  const auto* value = static_cast<CFNumberRef>(CFDictionaryGetValue(properties, key));
  return value != nullptr && CFNumberGetValue(value, kCFNumberIntType, &number) ? number : 0;
}

CFRef<CFDictionaryRef> NewDictionary(CFStringRef key, CFTypeRef value) {
  const void* keys[] = {key};
  const void* values[] = {value};
  return CFRef(CFDictionaryCreate(kCFAllocatorDefault, keys, values, 1, &kCFTypeDictionaryKeyCallBacks,
                                  &kCFTypeDictionaryValueCallBacks));
}

// ImageIO turns and shrinks while it decodes.
CFRef<CFDictionaryRef> DecodingOptions(PictureSize size) {
  const int longest = std::max(size.width, size.height);
  const CFRef<CFNumberRef> pixels(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &longest));
  const void* keys[] = {kCGImageSourceThumbnailMaxPixelSize, kCGImageSourceCreateThumbnailFromImageAlways,
                        kCGImageSourceCreateThumbnailWithTransform};
  const void* values[] = {pixels.get(), kCFBooleanTrue, kCFBooleanTrue};
  return CFRef(CFDictionaryCreate(kCFAllocatorDefault, keys, values, 3, &kCFTypeDictionaryKeyCallBacks,
                                  &kCFTypeDictionaryValueCallBacks));
}

CFRef<CGImageRef> InSRGB(CGImageRef image, bool hasAlpha) {
  const std::size_t width = CGImageGetWidth(image);
  const std::size_t height = CGImageGetHeight(image);
  const CFRef<CGColorSpaceRef> space(CGColorSpaceCreateWithName(kCGColorSpaceSRGB));
  const std::uint32_t alpha = hasAlpha ? kCGImageAlphaPremultipliedLast : kCGImageAlphaNoneSkipLast;
  const CFRef<CGContextRef> context(CGBitmapContextCreate(nullptr, width, height, 8, 0, space.get(), alpha));
  if (!context) return {};
  const CGRect all = CGRectMake(0, 0, static_cast<CGFloat>(width), static_cast<CGFloat>(height));
  if (!hasAlpha) {
    CGContextSetRGBFillColor(context.get(), 1, 1, 1, 1);
    CGContextFillRect(context.get(), all);
  }
  CGContextDrawImage(context.get(), all, image);
  return CFRef(CGBitmapContextCreateImage(context.get()));
}

// Fills a piece of memory and writes that to the file in one go.
class PictureWriter {
 public:
  PictureWriter(std::string_view type, std::size_t frames)
      : bytes_(CFDataCreateMutable(kCFAllocatorDefault, 0)),
        destination_(CGImageDestinationCreateWithData(bytes_.get(), NewCFString(type).get(), frames, nullptr)) {}

  [[nodiscard]] CGImageDestinationRef destination() const { return destination_.get(); }

  [[nodiscard]] Result<std::string> Finish(const std::string& path) {
    if (!destination_ || !CGImageDestinationFinalize(destination_.get())) return Fail("the picture can't be encoded");
    const auto* start = reinterpret_cast<const char*>(CFDataGetBytePtr(bytes_.get()));
    const std::string_view contents(start, static_cast<std::size_t>(CFDataGetLength(bytes_.get())));
    return ReplaceFile(path, contents, NewFile::AsUsual).map([&] { return path; });
  }

 private:
  CFRef<CFMutableDataRef> bytes_;
  CFRef<CGImageDestinationRef> destination_;
};

}  // namespace

PictureSource::PictureSource(const std::string& path) {
  const CFRef<CFURLRef> url = NewFileURL(path);
  source_ = CFRef(url ? CGImageSourceCreateWithURL(url.get(), nullptr) : nullptr);
  if (!source_ || CGImageSourceGetCount(source_.get()) == 0)
    failure_ = "no picture that the system can decode";
  else
    ReadHeader();
}

void PictureSource::ReadHeader() {
  const CFRef<CFDictionaryRef> properties(CGImageSourceCopyPropertiesAtIndex(source_.get(), 0, nullptr));
  if (!properties) {
    failure_ = "the picture has no header that the system can read";
    return;
  }
  size_ = {Number(properties.get(), kCGImagePropertyPixelWidth), Number(properties.get(), kCGImagePropertyPixelHeight)};
  // The upper half of the orientations lies on its side.
  if (Number(properties.get(), kCGImagePropertyOrientation) >= 5) std::swap(size_.width, size_.height);
  if (size_.width <= 0 || size_.height <= 0) failure_ = "the picture has no size";
  if (static_cast<double>(size_.width) * size_.height > kMostPixels) failure_ = "the picture has too many pixels";
  const std::string type = TextOf(CGImageSourceGetType(source_.get())).value_or("");
  for (const TypeName& each : kTypes) {
    if (each.type == type) format_ = each.name;
  }
  isPhoto_ = type == "public.heic" || type == "public.heif";
}

std::size_t PictureSource::frames() const { return CGImageSourceGetCount(source_.get()); }

CFRef<CGImageRef> PictureSource::Frame(std::size_t index, PictureSize size, bool hasAlpha) const {
  const CFRef<CGImageRef> decoded(
      CGImageSourceCreateThumbnailAtIndex(source_.get(), index, DecodingOptions(size).get()));
  return decoded ? InSRGB(decoded.get(), hasAlpha) : CFRef<CGImageRef>();
}

CFRef<CFDictionaryRef> PictureSource::FrameProperties(std::size_t index) const {
  const CFRef<CFDictionaryRef> all(CGImageSourceCopyPropertiesAtIndex(source_.get(), index, nullptr));
  const CFTypeRef gif = all ? CFDictionaryGetValue(all.get(), kCGImagePropertyGIFDictionary) : nullptr;
  return gif != nullptr ? NewDictionary(kCGImagePropertyGIFDictionary, gif) : CFRef<CFDictionaryRef>();
}

CFRef<CFDictionaryRef> PictureSource::Properties() const {
  const CFRef<CFDictionaryRef> all(CGImageSourceCopyProperties(source_.get(), nullptr));
  const CFTypeRef gif = all ? CFDictionaryGetValue(all.get(), kCGImagePropertyGIFDictionary) : nullptr;
  return gif != nullptr ? NewDictionary(kCGImagePropertyGIFDictionary, gif) : CFRef<CFDictionaryRef>();
}

Result<std::string> WritePicture(const std::string& path, const PictureFormat& format, const PictureSource& source,
                                 PictureSize size, std::size_t frames) {
  PictureWriter writer(TypeOf(format), frames);
  if (writer.destination() == nullptr) return Fail("the system does not write this format");
  if (frames > 1) CGImageDestinationSetProperties(writer.destination(), source.Properties().get());
  const CFRef<CFNumberRef> quality(CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &kQuality));
  const CFRef<CFDictionaryRef> encoding = NewDictionary(kCGImageDestinationLossyCompressionQuality, quality.get());
  for (std::size_t i = 0; i < frames; ++i) {
    const CFRef<CGImageRef> frame = source.Frame(i, size, format.hasAlpha);
    if (!frame) return Fail("the picture is damaged");
    const CFRef<CFDictionaryRef> timing = frames > 1 ? source.FrameProperties(i) : CFRef<CFDictionaryRef>();
    CGImageDestinationAddImage(writer.destination(), frame.get(), timing ? timing.get() : encoding.get());
  }
  return writer.Finish(path);
}

Result<std::string> WritePNG(const std::string& path, CGImageRef image) {
  PictureWriter writer("public.png", 1);
  if (writer.destination() == nullptr) return Fail("the system does not write PNG");
  CGImageDestinationAddImage(writer.destination(), image, nullptr);
  return writer.Finish(path);
}

}  // namespace tessaro::platform
