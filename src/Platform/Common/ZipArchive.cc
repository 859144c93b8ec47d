#include "Platform/ZipArchive.h"

#include <fnmatch.h>
#include <minizip/unzip.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>

#include "Base/Owned.h"
#include "Base/TextPieces.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 30;
constexpr int kMostFiles = 10000;
constexpr std::size_t kPiece = std::size_t{64} * 1024;
constexpr const char* kDamaged = "the archive is damaged";

struct Entry {
  std::string name;
  unz_file_info64 facts{};

  [[nodiscard]] bool IsEncrypted() const { return (facts.flag & 1) != 0; }

  [[nodiscard]] bool IsRegular() const {
    constexpr uLong kUnix = 3;
    const mode_t type = facts.version >> 8 == kUnix ? (facts.external_fa >> 16) & S_IFMT : 0;
    return !name.ends_with('/') && (type == 0 || type == S_IFREG);
  }
};

std::optional<Entry> CurrentEntry(unzFile archive) {
  Entry entry;
  const auto read = [&] {
    return unzGetCurrentFileInfo64(archive, &entry.facts, entry.name.data(), entry.name.size(), nullptr, 0, nullptr, 0);
  };
  if (read() != UNZ_OK) return std::nullopt;
  entry.name.resize(entry.facts.size_filename);
  return read() == UNZ_OK ? std::optional(std::move(entry)) : std::nullopt;
}

// Empty for a name that leads out of the folder.
fs::path PathBelow(const fs::path& folder, const std::string& name) {
  const fs::path path = name;
  if (path.empty() || path.is_absolute() || HasNul(name)) return {};
  const bool leadsUp = std::any_of(path.begin(), path.end(), [](const fs::path& part) { return part == ".."; });
  return leadsUp ? fs::path() : folder / path;
}

bool Matches(const fs::path& path, std::span<const std::string_view> patterns) {
  if (patterns.empty()) return true;
  return std::any_of(patterns.begin(), patterns.end(), [&](std::string_view pattern) {
    return fnmatch(std::string(pattern).c_str(), path.filename().c_str(), FNM_CASEFOLD) == 0;
  });
}

bool Exists(const fs::path& path) {
  std::error_code error;
  return fs::exists(fs::symlink_status(path, error));
}

// `room` is the number of bytes that the whole archive may still unpack to.
Result<void> WriteEntry(unzFile archive, const Entry& entry, const fs::path& path, std::uint64_t& room) {
  if (entry.IsEncrypted()) return Fail("the archive is encrypted");
  if (unzOpenCurrentFile(archive) != UNZ_OK) return Fail(kDamaged);
  std::error_code error;
  fs::create_directories(path.parent_path(), error);
  if (error) return Fail(path.native() + ": " + error.message());
  std::ofstream file(path, std::ios::binary);
  std::array<char, kPiece> piece;
  std::uint64_t length = 0;
  int count = 0;
  while ((count = unzReadCurrentFile(archive, piece.data(), piece.size())) > 0) {
    length += static_cast<std::uint64_t>(count);
    if (length > room) return Fail("the archive is too large");
    if (!file.write(piece.data(), count)) break;
  }
  room -= length;
  if (!file.flush()) return Fail("can't write " + path.native());
  // Closing checks the sum of a file that has been read to its end.
  const bool isWhole = count == 0 && length == entry.facts.uncompressed_size;
  if (unzCloseCurrentFile(archive) != UNZ_OK || !isWhole) return Fail(kDamaged);
  return {};
}

Result<void> UnpackEntries(unzFile archive, const fs::path& folder, std::span<const std::string_view> patterns) {
  std::uint64_t room = kMostBytes;
  int files = 0;
  int status = unzGoToFirstFile(archive);
  for (; status == UNZ_OK; status = unzGoToNextFile(archive)) {
    const auto entry = CurrentEntry(archive);
    if (!entry) return Fail(kDamaged);
    const fs::path path = PathBelow(folder, entry->name);
    if (!entry->IsRegular() || path.empty() || !Matches(path, patterns)) continue;
    if (++files > kMostFiles) return Fail("the archive has too many files");
    if (Exists(path)) continue;
    if (auto written = WriteEntry(archive, *entry, path, room); !written) {
      std::error_code error;
      fs::remove(path, error);
      return written;
    }
  }
  return status == UNZ_END_OF_LIST_OF_FILE ? Result<void>() : Fail(kDamaged);
}

}  // namespace

Result<void> UnpackZip(const fs::path& archive, const fs::path& folder,
                       std::span<const std::string_view> patterns) noexcept {
  std::error_code error;
  if (!fs::is_regular_file(archive, error)) return Fail("not a zip archive");
  const Owned<void, unzClose> file(unzOpen64(archive.c_str()));
  if (!file) return Fail("not a zip archive, or an empty one");
  fs::create_directories(folder, error);
  if (error) return Fail(folder.native() + ": " + error.message());
  return UnpackEntries(file.get(), folder, patterns);
}

}  // namespace tessaro::platform
