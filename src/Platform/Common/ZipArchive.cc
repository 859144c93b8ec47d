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

// Empty for a name that leads out of the folder.
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

// Writes the current entry. `room` is the number of bytes that this archive may still unpack to.
Result<void> WriteEntry(archive* reader, const fs::path& path, std::uint64_t& room) {
  std::error_code error;
  fs::create_directories(path.parent_path(), error);
  if (error) return Fail(path.native() + ": " + error.message());
  std::ofstream file(path, std::ios::binary);
  std::array<char, 64 * 1024> bytes;
  for (;;) {
    const auto length = archive_read_data(reader, bytes.data(), bytes.size());
    if (length == 0 && file.flush().good()) return {};
    if (length < 0) return Fail("the archive is damaged");
    if (static_cast<std::uint64_t>(length) > room) return Fail("the archive is too large");
    room -= static_cast<std::uint64_t>(length);
    if (!file.write(bytes.data(), length)) return Fail("can't write " + path.native());
  }
}

bool Exists(const fs::path& path) {
  std::error_code error;
  return fs::exists(fs::symlink_status(path, error));
}

}  // namespace

Result<void> UnpackZip(const fs::path& archive, const fs::path& folder,
                       std::span<const std::string_view> patterns) noexcept {
  const Reader reader = Open(archive);
  if (reader == nullptr) return Fail("not a zip archive");
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) return Fail(folder.native() + ": " + error.message());
  std::uint64_t room = kMostBytes;
  for (int files = 0; files <= kMostFiles;) {
    archive_entry* entry = nullptr;
    const int status = archive_read_next_header(reader.get(), &entry);
    if (status == ARCHIVE_EOF) return {};
    if (status != ARCHIVE_OK && status != ARCHIVE_WARN) return Fail("the archive is damaged");
    const fs::path path = PathBelow(folder, archive_entry_pathname(entry));
    if (archive_entry_filetype(entry) != AE_IFREG || path.empty() || !Matches(path, patterns)) continue;
    ++files;
    if (Exists(path)) continue;
    if (auto written = WriteEntry(reader.get(), path, room); !written) {
      fs::remove(path, error);
      return written;
    }
  }
  return Fail("the archive has too many files");
}

}  // namespace tessaro::platform
