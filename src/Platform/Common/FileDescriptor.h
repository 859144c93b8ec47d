#pragma once

#include <unistd.h>

#include <filesystem>
#include <utility>

#include "Base/Result.h"

namespace tessaro::platform {

// Owner of a file descriptor.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~FileDescriptor() {
    if (descriptor_ >= 0) close(descriptor_);
  }

  [[nodiscard]] int get() const { return descriptor_; }
  explicit operator bool() const { return descriptor_ >= 0; }

 private:
  int descriptor_ = -1;
};

// Opens a regular file for reading: another one may never end.
[[nodiscard]] Result<FileDescriptor> OpenToRead(const std::filesystem::path& file) noexcept;

}  // namespace tessaro::platform
