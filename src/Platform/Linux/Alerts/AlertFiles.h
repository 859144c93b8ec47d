#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro::platform {

// The alerts that are yet to be delivered, a file each, so that they outlive the process. Nothing throws.
class AlertFiles {
 public:
  struct File {
    std::filesystem::path path;
    std::string contents;
  };

  explicit AlertFiles(std::filesystem::path directory) : directory_(std::move(directory)) {}

  // In no order. Files that can't be read are passed over.
  [[nodiscard]] std::vector<File> All() const noexcept;

  // The file is complete on disk when this returns; an empty path when it could not be written.
  [[nodiscard]] std::filesystem::path Keep(std::string_view contents) const noexcept;

  static void Remove(const std::filesystem::path& file) noexcept;

 private:
  std::filesystem::path directory_;
};

}  // namespace tessaro::platform
