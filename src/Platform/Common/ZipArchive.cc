#include "Platform/ZipArchive.h"

#include <fnmatch.h>
#include <sys/stat.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <limits>
#include <optional>
#include <string>
#include <system_error>

#include "Base/TextPieces.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 30;
constexpr int kMostFiles = 10000;
constexpr std::uint64_t kMostDirectoryBytes = std::uint64_t{64} << 20;
constexpr std::size_t kPiece = std::size_t{64} * 1024;
constexpr const char* kDamaged = "the archive is damaged";

// Records of the format, which is little-endian: https://pkware.cachefly.net/webdocs/casestudies/APPNOTE.TXT
constexpr std::string_view kEndSignature = "PK\5\6";
constexpr std::size_t kEndLength = 22;
constexpr std::string_view kEntrySignature = "PK\1\2";
constexpr std::size_t kEntryLength = 46;
constexpr std::string_view kLocalSignature = "PK\3\4";
constexpr std::size_t kLocalLength = 30;

enum class Method : std::uint16_t { Stored = 0, Deflated = 8 };

struct Entry {
  std::string name;
  Method method = Method::Stored;
  bool encrypted = false;
  bool regular = false;
  std::uint32_t checksum = 0;
  std::uint32_t length = 0;
  std::uint64_t offset = 0;
};

// The caller has checked that `bytes` is long enough.
template <typename Number>
Number NumberAt(std::string_view bytes, std::size_t offset) {
  Number number = 0;
  for (std::size_t i = 0; i < sizeof(Number); ++i)
    number |= static_cast<Number>(static_cast<Number>(static_cast<unsigned char>(bytes[offset + i])) << (8 * i));
  return number;
}

constexpr auto Number16At = NumberAt<std::uint16_t>;
constexpr auto Number32At = NumberAt<std::uint32_t>;

// Empty when the file does not have these bytes.
std::string BytesAt(std::ifstream& file, std::uint64_t offset, std::uint64_t length) {
  std::string bytes(length, '\0');
  file.clear();
  file.seekg(static_cast<std::streamoff>(offset));
  return file.read(bytes.data(), static_cast<std::streamsize>(length)) ? bytes : std::string();
}

struct Directory {
  std::string bytes;
  std::uint64_t archiveStart = 0;  // after the program of a self-extracting archive
};

// The last record says where the directory is; only a comment may follow the record.
std::optional<Directory> ReadDirectory(std::ifstream& file) {
  file.seekg(0, std::ios::end);
  const auto size = static_cast<std::uint64_t>(std::max<std::streamoff>(file.tellg(), 0));
  const std::uint64_t tailLength =
      std::min<std::uint64_t>(size, kEndLength + std::numeric_limits<std::uint16_t>::max());
  const std::string tail = BytesAt(file, size - tailLength, tailLength);
  const std::size_t end = tail.rfind(kEndSignature);
  if (end == std::string::npos || tail.size() - end < kEndLength) return std::nullopt;
  const std::uint64_t length = Number32At(tail, end + 12);
  const std::uint64_t offset = Number32At(tail, end + 16);
  const std::uint64_t directoryEnd = size - tailLength + end;
  if (length > kMostDirectoryBytes || length + offset > directoryEnd) return std::nullopt;
  return Directory{.bytes = BytesAt(file, directoryEnd - length, length),
                   .archiveStart = directoryEnd - length - offset};
}

bool IsRegular(std::string_view name, std::uint16_t maker, std::uint32_t attributes) {
  constexpr std::uint16_t kUnix = 3;
  const mode_t type = maker >> 8 == kUnix ? (attributes >> 16) & S_IFMT : 0;
  return !name.ends_with('/') && (type == 0 || type == S_IFREG);
}

// Takes the first entry off `directory`; none when that is damaged.
std::optional<Entry> NextEntry(std::string_view& directory) {
  if (!directory.starts_with(kEntrySignature) || directory.size() < kEntryLength) return std::nullopt;
  const std::size_t nameLength = Number16At(directory, 28);
  const std::size_t length = kEntryLength + nameLength + Number16At(directory, 30) + Number16At(directory, 32);
  if (directory.size() < length) return std::nullopt;
  Entry entry{.name = std::string(directory.substr(kEntryLength, nameLength)),
              .method = Method{Number16At(directory, 10)},
              .encrypted = (Number16At(directory, 8) & 1) != 0,
              .checksum = Number32At(directory, 16),
              .length = Number32At(directory, 20),
              .offset = Number32At(directory, 42)};
  entry.regular = IsRegular(entry.name, Number16At(directory, 4), Number32At(directory, 38));
  directory.remove_prefix(length);
  return entry;
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

// A file that is being unpacked. `room` is the number of bytes that the whole archive may still unpack to.
class UnpackedFile {
 public:
  UnpackedFile(fs::path path, std::uint64_t& room) : path_(std::move(path)), room_(room) {}

  Result<void> Create() {
    std::error_code error;
    fs::create_directories(path_.parent_path(), error);
    if (error) return Fail(path_.native() + ": " + error.message());
    file_.open(path_, std::ios::binary);
    return {};
  }

  Result<void> Write(std::string_view bytes) {
    if (bytes.size() > room_) return Fail("the archive is too large");
    room_ -= bytes.size();
    checksum_ = crc32_z(checksum_, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
    if (!file_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()))) return WriteFailure();
    return {};
  }

  Result<void> Finish(std::uint32_t checksum) {
    if (!file_.flush()) return WriteFailure();
    return checksum_ == checksum ? Result<void>() : Fail(kDamaged);
  }

 private:
  tl::unexpected<Failure> WriteFailure() const { return Fail("can't write " + path_.native()); }

  const fs::path path_;
  std::uint64_t& room_;
  std::ofstream file_;
  uLong checksum_ = crc32_z(0, nullptr, 0);
};

class Inflater {
 public:
  Inflater() : ready_(inflateInit2(&stream_, -MAX_WBITS) == Z_OK) {}
  ~Inflater() { inflateEnd(&stream_); }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;

  Result<void> Inflate(std::string_view bytes, UnpackedFile& file) {
    if (!ready_) return Fail("no memory to unpack the archive");
    // zlib does not write to its input.
    stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream_.avail_in = static_cast<uInt>(bytes.size());
    do {
      stream_.next_out = reinterpret_cast<Bytef*>(piece_.data());
      stream_.avail_out = static_cast<uInt>(piece_.size());
      const int status = inflate(&stream_, Z_NO_FLUSH);
      if (status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR) return Fail(kDamaged);
      if (auto written = file.Write({piece_.data(), piece_.size() - stream_.avail_out}); !written) return written;
      if (status == Z_STREAM_END) return {};
    } while (stream_.avail_out == 0);
    return {};
  }

 private:
  z_stream stream_ = {};
  bool ready_;
  std::array<char, kPiece> piece_;
};

Result<void> WriteEntry(std::ifstream& archive, std::uint64_t archiveStart, const Entry& entry, UnpackedFile& file) {
  if (entry.encrypted) return Fail("the archive is encrypted");
  if (entry.method != Method::Stored && entry.method != Method::Deflated) return Fail("an unknown compression method");
  const std::uint64_t start = archiveStart + entry.offset;
  const std::string header = BytesAt(archive, start, kLocalLength);
  if (!header.starts_with(kLocalSignature)) return Fail(kDamaged);
  archive.seekg(static_cast<std::streamoff>(start + kLocalLength + Number16At(header, 26) + Number16At(header, 28)));
  if (auto created = file.Create(); !created) return created;
  Inflater inflater;
  std::array<char, kPiece> piece;
  for (std::uint64_t left = entry.length; left > 0;) {
    archive.read(piece.data(), static_cast<std::streamsize>(std::min<std::uint64_t>(left, piece.size())));
    const auto count = static_cast<std::size_t>(archive.gcount());
    if (count == 0) return Fail(kDamaged);
    left -= count;
    const std::string_view bytes(piece.data(), count);
    auto written = entry.method == Method::Stored ? file.Write(bytes) : inflater.Inflate(bytes, file);
    if (!written) return written;
  }
  return file.Finish(entry.checksum);
}

bool Exists(const fs::path& path) {
  std::error_code error;
  return fs::exists(fs::symlink_status(path, error));
}

Result<void> UnpackEntries(std::ifstream& archive, const Directory& directory, const fs::path& folder,
                           std::span<const std::string_view> patterns) {
  std::uint64_t room = kMostBytes;
  int files = 0;
  for (std::string_view rest = directory.bytes; !rest.empty();) {
    const auto entry = NextEntry(rest);
    if (!entry) return Fail(kDamaged);
    const fs::path path = PathBelow(folder, entry->name);
    if (!entry->regular || path.empty() || !Matches(path, patterns)) continue;
    if (++files > kMostFiles) return Fail("the archive has too many files");
    if (Exists(path)) continue;
    UnpackedFile file(path, room);
    if (auto written = WriteEntry(archive, directory.archiveStart, *entry, file); !written) {
      std::error_code error;
      fs::remove(path, error);
      return written;
    }
  }
  return {};
}

}  // namespace

Result<void> UnpackZip(const fs::path& archive, const fs::path& folder,
                       std::span<const std::string_view> patterns) noexcept {
  std::error_code error;
  if (!fs::is_regular_file(archive, error)) return Fail("not a zip archive");
  std::ifstream file(archive, std::ios::binary);
  const auto directory = ReadDirectory(file);
  if (!directory) return Fail("not a zip archive");
  fs::create_directories(folder, error);
  if (error) return Fail(folder.native() + ": " + error.message());
  return UnpackEntries(file, *directory, folder, patterns);
}

}  // namespace tessaro::platform
