#include "Platform/Printing.h"

#include <array>
#include <filesystem>
#include <system_error>

#include "Platform/Applications.h"
#include "Platform/Linux/Base/FileURI.h"
#include "Platform/Linux/Desktop/DesktopEntries.h"

namespace tessaro::platform {

namespace {

// These programs open with their print dialog.
constexpr std::array kPreviewers = {"evince-previewer", "atril-previewer", "xreader-previewer"};

}  // namespace

Result<void> PrintFile(const std::string& path) noexcept {
  std::error_code error;
  if (HasNul(path) || !std::filesystem::is_regular_file(path, error)) return Fail("there is no such file");
  const std::string absolute = AbsolutePath(path);
  for (const char* previewer : kPreviewers) {
    if (Spawn({previewer, absolute})) return {};
  }
  // lp and lpr would print without a dialog.
  return OpenFile(absolute, "");
}

}  // namespace tessaro::platform
