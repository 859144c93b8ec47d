#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "Base/Result.h"

namespace tessaro::platform {

// The one file that the application is started from; empty unless the bundle belongs to an AppImage. An application
// that was installed in another way is its package manager's to change.
[[nodiscard]] std::filesystem::path AppImageOf(const std::filesystem::path& bundle) noexcept;

// The application's version that an AppImage names in its section ".tessaro.version"; empty without the section. Fails
// for contents that are no AppImage, or one for another processor. Any contents may be given.
[[nodiscard]] Result<std::string> VersionInAppImage(std::string_view contents) noexcept;

// Whether an AppImage may take the place of `current` as `version`. A file that names its version has to name this one:
// a feed could list a file under a higher version than it was signed for. It has to name one if `current` does.
[[nodiscard]] Result<void> CheckNewAppImage(std::string_view contents, std::string_view version,
                                            const std::filesystem::path& current) noexcept;

}  // namespace tessaro::platform
