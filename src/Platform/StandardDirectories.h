#pragma once

#include <filesystem>
#include <string_view>

namespace tessaro::platform {

// The folder for an application's log files. It may not exist yet.
[[nodiscard]] std::filesystem::path LogDirectory(std::string_view applicationName);

// The folder for the records of an application's crashes. It may not exist yet.
[[nodiscard]] std::filesystem::path CrashDirectory(std::string_view applicationName);

// The user's home; "/" when the system knows none.
[[nodiscard]] std::filesystem::path HomeDirectory();

}  // namespace tessaro::platform
