#include "Platform/Aliases.h"

#include <system_error>

namespace tessaro::platform {

namespace fs = std::filesystem;

fs::path ResolveAlias(const fs::path& alias) noexcept {
  std::error_code error;
  if (!fs::is_symlink(alias, error)) return {};
  fs::path target = fs::canonical(alias, error);
  return error ? fs::path() : target;
}

std::string WriteAlias(const fs::path& alias, const fs::path& target) noexcept {
  std::error_code error;
  fs::create_symlink(target, alias, error);
  return error ? error.message() : "";
}

}  // namespace tessaro::platform
