#include "Platform/Files.h"

#include <system_error>

// Aliases are symbolic links here.
namespace tessaro::platform {

namespace fs = std::filesystem;

fs::path ResolveAlias(const fs::path& alias) noexcept {
  std::error_code error;
  if (!fs::is_symlink(alias, error)) return {};
  fs::path target = fs::canonical(alias, error);
  return error ? fs::path() : target;
}

Result<void> WriteAlias(const fs::path& alias, const fs::path& target) noexcept {
  std::error_code error;
  fs::create_symlink(target, alias, error);
  if (error) return Fail(error.message());
  return {};
}

}  // namespace tessaro::platform
