#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tessaro::platform {

// The POSIX path of an HFS path ("Volume:folder:file"), both UTF-8. Nothing when the text is no HFS path. Any thread;
// the disk isn't consulted.
[[nodiscard]] std::optional<std::string> PosixPathOfHFSPath(std::string_view path);

}  // namespace tessaro::platform
