#pragma once

#include <filesystem>
#include <string_view>

#include "Base/Result.h"

namespace tessaro::platform {

// The AppImage that contains the running bundle; empty for an application installed otherwise, which its package
// manager updates.
[[nodiscard]] std::filesystem::path AppImageOf(const std::filesystem::path& bundle) noexcept;

// Fails when an AppImage may not replace `current` as `version`. The file's own version must be this one: a feed could
// list a file under a higher version than it was signed for. Only if `current` has no version, the file needs none.
[[nodiscard]] Result<void> CheckNewAppImage(std::string_view contents, std::string_view version,
                                            const std::filesystem::path& current) noexcept;

}  // namespace tessaro::platform
