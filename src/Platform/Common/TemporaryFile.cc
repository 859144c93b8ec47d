#include "Platform/TemporaryFile.h"

#include <stdlib.h>

#include <filesystem>
#include <system_error>

#include "Platform/Common/FileDescriptor.h"

namespace tessaro::platform {

TemporaryFile::TemporaryFile(std::string_view extension) noexcept {
  std::error_code error;
  std::string name = std::filesystem::temp_directory_path(error) / "tessaro-XXXXXX";
  name += extension;
  const FileDescriptor file(mkstemps(name.data(), static_cast<int>(extension.size())));
  if (file) path_ = std::move(name);
}

TemporaryFile::~TemporaryFile() {
  std::error_code error;
  if (!path_.empty()) std::filesystem::remove(path_, error);
}

}  // namespace tessaro::platform
