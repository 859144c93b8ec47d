#pragma once

#include <string>

#include "Base/Result.h"

namespace tessaro::platform {

// Opens a file in a document viewer from which the user prints; nothing is printed without a dialog. Fails when there
// is no such viewer, or no such file. Any thread; nothing throws.
[[nodiscard]] Result<void> PrintFile(const std::string& path) noexcept;

}  // namespace tessaro::platform
