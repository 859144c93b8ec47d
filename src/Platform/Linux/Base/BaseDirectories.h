#pragma once

#include <filesystem>
#include <vector>

namespace tessaro::platform {

// The folders of the XDG base directory standard, which wants relative paths to be ignored.

[[nodiscard]] std::filesystem::path ConfigHome();
[[nodiscard]] std::filesystem::path StateHome();
[[nodiscard]] std::filesystem::path DataHome();

// Those of the system, the most important one first.
[[nodiscard]] std::vector<std::filesystem::path> ConfigDirectories();
[[nodiscard]] std::vector<std::filesystem::path> DataDirectories();

// The absolute path in an environment variable; empty when there is none.
[[nodiscard]] std::filesystem::path AbsolutePathIn(const char* variable);

}  // namespace tessaro::platform
