#pragma once

#include <filesystem>

#include "Base/Result.h"

// Files that stand for other files. Nothing throws; any thread.
namespace tessaro::platform {

// The file that the alias leads to; empty when `alias` is no alias, or its target is missing.
[[nodiscard]] std::filesystem::path ResolveAlias(const std::filesystem::path& alias) noexcept;

[[nodiscard]] Result<void> WriteAlias(const std::filesystem::path& alias, const std::filesystem::path& target) noexcept;

}  // namespace tessaro::platform
