#pragma once

#include <string>
#include <string_view>

namespace tessaro::platform {

// A new, empty file in the user's temporary folder that only the user may read; removed at the end of its owner's life.
class TemporaryFile {
 public:
  // With the dot. path() is empty when no file could be made.
  explicit TemporaryFile(std::string_view extension) noexcept;
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace tessaro::platform
