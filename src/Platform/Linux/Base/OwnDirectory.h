#pragma once

#include <filesystem>

namespace tessaro::platform {

// The folder that the module was loaded from; its programs lie beside it.
[[nodiscard]] std::filesystem::path OwnDirectory() noexcept;

}  // namespace tessaro::platform
