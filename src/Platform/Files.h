#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "Base/Result.h"

// Regular files, so no call waits for the other end of a pipe. Any thread; waits for the disk. A failure's code is the
// system's error number.
namespace tessaro::platform {

enum class Longer { Fails, IsCut };

// The contents, or the first `most` bytes of a longer file.
[[nodiscard]] Result<std::string> ReadFile(const std::filesystem::path& file, std::size_t most,
                                           Longer longer = Longer::Fails) noexcept;

// Files are written completely or not at all.

enum class NewFile { ForUserOnly, AsUsual };

// Replaces a file atomically, through links, keeping its permissions; `access` applies to a new file. Fails for a file
// that the user may not write. The contents are on the disk when this succeeds.
[[nodiscard]] Result<void> ReplaceFile(const std::filesystem::path& file, std::string_view contents,
                                       NewFile access = NewFile::ForUserOnly) noexcept;

// The same for a file that can be made again, and so needn't survive a power failure: doesn't wait for the disk, which
// takes many times longer than the rest. A new file is for the user only.
[[nodiscard]] Result<void> ReplaceTransientFile(const std::filesystem::path& file, std::string_view contents) noexcept;

// Appends to a file, or creates it. After a failure the file is as long as before.
[[nodiscard]] Result<void> AppendToFile(const std::filesystem::path& file, std::string_view contents,
                                        NewFile access = NewFile::ForUserOnly) noexcept;

// The file that an alias leads to; empty when `alias` is no alias, or its target is missing.
[[nodiscard]] std::filesystem::path ResolveAlias(const std::filesystem::path& alias) noexcept;

[[nodiscard]] Result<void> WriteAlias(const std::filesystem::path& alias, const std::filesystem::path& target) noexcept;

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
