#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tessaro::platform {

// The POSIX path, UTF-8, of a classic path, whose parts are divided by colons and which begins with the name of a
// volume. Without a value when it is no such path. Any thread; nothing is looked up on a disk.
[[nodiscard]] std::optional<std::string> PosixPathOfHFSPath(std::string_view path);

}  // namespace tessaro::platform
