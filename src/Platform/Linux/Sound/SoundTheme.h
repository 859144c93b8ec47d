#pragma once

#include <filesystem>
#include <vector>

namespace tessaro::platform {

// The folders of the desktop's sound theme and of the themes that it inherits from, in search order.
[[nodiscard]] std::vector<std::filesystem::path> SoundThemeFolders();

}  // namespace tessaro::platform
