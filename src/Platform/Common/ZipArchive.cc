#include "Platform/ZipArchive.h"

#include <archive.h>
#include <archive_entry.h>
#include <fnmatch.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <system_error>

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 30;
constexpr int kMostFiles = 10000;

using Reader = std::unique_ptr<archive, decltype([](archive* reader) { archive_read_free(reader); })>;

Reader Open(const fs::path& file) {
  std::error_code error;
  if (!fs::is_regular_file(file, error)) return nullptr;
  Reader reader(archive_read_new());
  if (reader == nullptr) return nullptr;
  archive_read_support_format_zip_seekable(reader.get());
  constexpr std::size_t kBlock = 64 * 1024;
  return archive_read_open_filename(reader.get(), file.c_str(), kBlock) == ARCHIVE_OK ? std::move(reader) : nullptr;
}

// Empty for a name that leads elsewhere.
fs::path PathBelow(const fs::path& folder, const char* name) {
  const fs::path path = name != nullptr ? name : "";
  if (path.empty() || path.is_absolute()) return {};
  const bool leadsUp = std::any_of(path.begin(), path.end(), [](const fs::path& part) { return part == ".."; });
  return leadsUp ? fs::path() : folder / path;
}

bool Matches(const fs::path& path, std::span<const std::string_view> patterns) {
  if (patterns.empty()) return true;
  return std::any_of(patterns.begin(), patterns.end(), [&](std::string_view pattern) {
    return fnmatch(std::string(pattern).c_str(), path.filename().c_str(), FNM_CASEFOLD) == 0;
  });
}

// Writes the entry that the reader stands at. `room` is what is left for this archive.
bool WriteEntry(archive* reader, const fs::path& path, std::uint64_t& room) {
  std::error_code error;
  fs::create_directories(path.parent_path(), error);
  if (error || fs::exists(fs::symlink_status(path, error))) return false;
  std::ofstream file(path, std::ios::binary);
  std::array<char, 64 * 1024> bytes;
  for (;;) {
    const auto length = archive_read_data(reader, bytes.data(), bytes.size());
    if (length == 0) return file.flush().good();
    if (length < 0 || static_cast<std::uint64_t>(length) > room) return false;
    room -= static_cast<std::uint64_t>(length);
    if (!file.write(bytes.data(), length)) return false;
  }
}

}  // namespace

bool UnpackZip(const fs::path& archive, const fs::path& folder, std::span<const std::string_view> patterns) noexcept {
  const Reader reader = Open(archive);
  std::error_code error;
  if (reader == nullptr || (!fs::create_directories(folder, error) && error)) return false;
  std::uint64_t room = kMostBytes;
  for (int files = 0; files <= kMostFiles;) {
    archive_entry* entry = nullptr;
    const int status = archive_read_next_header(reader.get(), &entry);
    if (status == ARCHIVE_EOF) return true;
    if (status != ARCHIVE_OK && status != ARCHIVE_WARN) return false;
    const fs::path path = PathBelow(folder, archive_entry_pathname(entry));
    if (archive_entry_filetype(entry) != AE_IFREG || path.empty() || !Matches(path, patterns)) continue;
    if (!WriteEntry(reader.get(), path, room)) return false;
    ++files;
  }
  return false;
}

}  // namespace tessaro::platform
