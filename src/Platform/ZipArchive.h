#pragma once

#include <filesystem>
#include <span>
#include <string_view>

#include "Base/Result.h"

namespace tessaro::platform {

// Unpacks the files of a zip archive into `folder`, which is made: those whose names match one of `patterns`
// ("*.jpg", in any case), or all when there are none. A file that exists is left as it is. Archives may be hostile:
// names that lead out of the folder, links and devices are skipped. Fails at damage, or beyond a gibibyte or 10 000
// files; the files unpacked before that stay. Any thread; nothing throws.
[[nodiscard]] Result<void> UnpackZip(const std::filesystem::path& archive, const std::filesystem::path& folder,
                                     std::span<const std::string_view> patterns) noexcept;

}  // namespace tessaro::platform
