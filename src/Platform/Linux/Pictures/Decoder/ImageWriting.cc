#include "Platform/Linux/Pictures/Decoder/ImageWriting.h"

#include <system_error>

#include "Platform/FileWriting.h"

namespace tessaro::platform {

Result<std::string> WritePictureFile(const std::string& path, std::string_view contents) {
  const std::error_code error = ReplaceTransientFile(path, contents);
  if (error) return Fail(error.value(), path + ": " + error.message());
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
