#pragma once

#include <filesystem>
#include <vector>

namespace tessaro::platform {

// The folders of the XDG base directory standard, which wants relative paths to be ignored.

[[nodiscard]] std::filesystem::path ConfigHome();
[[nodiscard]] std::filesystem::path StateHome();
[[nodiscard]] std::filesystem::path DataHome();

// The system's directories, the most important one first.
[[nodiscard]] std::vector<std::filesystem::path> ConfigDirectories();
[[nodiscard]] std::vector<std::filesystem::path> DataDirectories();

// The absolute path in an environment variable; empty if missing.
[[nodiscard]] std::filesystem::path AbsolutePathIn(const char* variable);

// The folder that the module was loaded from; its programs lie beside it.
[[nodiscard]] std::filesystem::path OwnDirectory() noexcept;

}  // namespace tessaro::platform
