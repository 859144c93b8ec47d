#pragma once

#include <filesystem>
#include <string>

namespace tessaro::platform {

// The file of the user's icon theme that suits `size` best: PNG or SVG. Empty when no theme has an icon of that name.
[[nodiscard]] std::filesystem::path ThemedIcon(const std::string& name, int size);

}  // namespace tessaro::platform
