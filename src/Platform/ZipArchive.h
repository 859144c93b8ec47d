#pragma once

#include <filesystem>
#include <span>
#include <string_view>

namespace tessaro::platform {

// Unpacks the files of a zip archive into `folder`, which is made; only those whose names match one of `patterns`
// ("*.jpg", whatever the case), or all when there are none. Archives are taken to be hostile: names that lead out of
// the folder, links and devices are left out, and what grows beyond a gibibyte, 10 000 files, or is damaged, ends the
// unpacking. False then; what has been unpacked stays. Any thread; nothing throws.
[[nodiscard]] bool UnpackZip(const std::filesystem::path& archive, const std::filesystem::path& folder,
                             std::span<const std::string_view> patterns) noexcept;

}  // namespace tessaro::platform
