#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>

namespace tessaro::platform {

// Gives a file other contents: at once and completely, or not at all. Of a link, the file it leads to is replaced. Its
// permissions are kept; a new file is the user's alone. The contents are on the disk when this returns without an
// error. Any thread; waits for the disk.
[[nodiscard]] std::error_code ReplaceFile(const std::filesystem::path& file, std::string_view contents) noexcept;

}  // namespace tessaro::platform
