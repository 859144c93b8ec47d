#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>

// Files that are written completely or not at all. Any thread; waits for the disk, and for no reader: only regular
// files are written.
namespace tessaro::platform {

enum class NewFile { ForUserOnly, AsUsual };

// Gives a file other contents, at once. Of a link, the file it leads to is replaced. Its permissions are kept, and one
// that the user may not write is left alone; `access` says who may read a new one. The contents are on the disk when
// this returns without an error.
[[nodiscard]] std::error_code ReplaceFile(const std::filesystem::path& file, std::string_view contents,
                                          NewFile access = NewFile::ForUserOnly) noexcept;

// Adds to the end of a file, or makes a new one. After an error the file is as long as before.
[[nodiscard]] std::error_code AppendToFile(const std::filesystem::path& file, std::string_view contents,
                                           NewFile access = NewFile::ForUserOnly) noexcept;

}  // namespace tessaro::platform
