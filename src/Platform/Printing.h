#pragma once

#include <string>

namespace tessaro::platform {

// Hands a file to what prints documents for people: the document viewer's print preview, or the printing system. False
// when there is neither, or no such file. Any thread; nothing throws.
[[nodiscard]] bool PrintFile(const std::string& path) noexcept;

}  // namespace tessaro::platform
