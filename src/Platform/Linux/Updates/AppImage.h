#pragma once

#include <filesystem>

namespace tessaro::platform {

// The one file that the application is started from; empty unless the bundle belongs to an AppImage. Whatever is
// installed otherwise is not the application's to change, but its package manager's.
[[nodiscard]] std::filesystem::path AppImageOf(const std::filesystem::path& bundle) noexcept;

}  // namespace tessaro::platform
