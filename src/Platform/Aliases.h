#pragma once

#include <filesystem>
#include <string>

namespace tessaro::platform {

// Files that stand for others: on Linux symbolic links. Nothing throws; any thread.

// What the alias leads to, if it exists; empty for what is no alias.
[[nodiscard]] std::filesystem::path ResolveAlias(const std::filesystem::path& alias) noexcept;

// Empty on success, otherwise the reason.
[[nodiscard]] std::string WriteAlias(const std::filesystem::path& alias, const std::filesystem::path& target) noexcept;

}  // namespace tessaro::platform
