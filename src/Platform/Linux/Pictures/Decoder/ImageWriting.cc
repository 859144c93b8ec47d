#include "Platform/Linux/Pictures/Decoder/ImageWriting.h"

#include "Platform/Files.h"

namespace tessaro::platform {

Result<std::string> WritePictureFile(const std::string& path, std::string_view contents) {
  const auto written = ReplaceTransientFile(path, contents);
  if (!written) return Fail(written.error().code, path + ": " + written.error().message);
  return path;
}

Result<std::string> SaveImage(const VipsImagePtr& image, const char* format, const std::string& path) {
  void* bytes = nullptr;
  std::size_t size = 0;
  if (!image || vips_image_write_to_buffer(image.get(), format, &bytes, &size, nullptr) != 0)
    return Fail(VipsFailure());
  const GTextPtr owner(static_cast<char*>(bytes));
  return WritePictureFile(path, {owner.get(), size});
}

}  // namespace tessaro::platform
