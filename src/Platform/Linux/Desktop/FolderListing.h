#pragma once

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace tessaro::platform {

struct FolderEntry {
  std::string name;
  std::string order;  // names sort by these, numbers within them by their value
  bool isFolder = false;
  std::uintmax_t size = 0;
  std::time_t changed = 0;
};

struct FolderListing {
  std::vector<FolderEntry> entries;  // folders first
  std::error_code error;             // why there are no more of them
};

struct FolderView {
  bool showsFiles = true;
  bool showsHidden = false;
  std::vector<std::string> extensions;  // of the files that count; none: all of them
};

// What a person can choose among: folders and regular files whose names are text. Any thread; waits for the disk.
[[nodiscard]] FolderListing ListFolder(const std::filesystem::path& folder, const FolderView& view) noexcept;

// Whether the name ends in one of the extensions, or there are none.
[[nodiscard]] bool HasExtension(const std::string& name, const std::vector<std::string>& extensions) noexcept;

// A name that was found in a mail, say, as that of a file in a folder: it leads nowhere else and isn't hidden.
[[nodiscard]] std::string HarmlessName(const std::string& name) noexcept;

// "3.4 MB".
[[nodiscard]] std::string SizeText(std::uintmax_t bytes) noexcept;
// The day, and the time of it, in the person's own form.
[[nodiscard]] std::string TimeText(std::time_t time) noexcept;

}  // namespace tessaro::platform
