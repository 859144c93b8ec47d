#include "Platform/Printing.h"

#include <array>
#include <filesystem>
#include <system_error>

#include "Platform/Linux/Base/GLibOwners.h"

namespace tessaro::platform {

namespace {

// Those that show a print panel come first. Paths are absolute, so none of them is taken for an option.
constexpr std::array kPrinters = {"evince-previewer", "atril-previewer", "xreader-previewer", "lp", "lpr"};

bool Start(const char* program, const char* file) {
  std::array<char*, 3> words = {const_cast<char*>(program), const_cast<char*>(file), nullptr};
  constexpr auto kFlags =
      static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL);
  return g_spawn_async(nullptr, words.data(), nullptr, kFlags, nullptr, nullptr, nullptr, nullptr);
}

}  // namespace

bool PrintFile(const std::string& path) noexcept {
  std::error_code error;
  if (path.find('\0') != std::string::npos || !std::filesystem::is_regular_file(path, error)) return false;
  const GTextPtr absolute(g_canonicalize_filename(path.c_str(), nullptr));
  for (const char* printer : kPrinters) {
    if (Start(printer, absolute.get())) return true;
  }
  return false;
}

}  // namespace tessaro::platform
