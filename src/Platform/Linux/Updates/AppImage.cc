#include "Platform/Linux/Updates/AppImage.h"

#include <algorithm>

#include "Platform/Linux/Base/BaseDirectories.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

bool Contains(const fs::path& folder, const fs::path& file) {
  std::error_code error;
  const fs::path outer = fs::canonical(folder, error);
  if (error) return false;
  const fs::path inner = fs::canonical(file, error);
  if (error) return false;
  return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
}

}  // namespace

fs::path AppImageOf(const fs::path& bundle) noexcept {
  // Everything that an AppImage starts inherits these variables: a terminal, and whatever is started from there.
  const fs::path mounted = AbsolutePathIn("APPDIR");
  if (mounted.empty() || !Contains(mounted, bundle)) return {};
  const fs::path image = AbsolutePathIn("APPIMAGE");
  std::error_code error;
  return fs::is_regular_file(image, error) ? image : fs::path();
}

}  // namespace tessaro::platform
