#include "Platform/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "Base/TextPieces.h"
#include "Platform/Common/FileDescriptor.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr int kMostLinks = 40;
constexpr int kMostNames = 16;

enum class Durability { OnDisk, Transient };

tl::unexpected<Failure> FailWith(std::error_code error) { return Fail(error.value(), error.message()); }

tl::unexpected<Failure> FailWith(std::errc code) { return FailWith(std::make_error_code(code)); }

tl::unexpected<Failure> FailWithErrno() { return FailWith({errno, std::generic_category()}); }

mode_t ModeOf(NewFile access) { return access == NewFile::AsUsual ? 0666 : 0600; }

// The file that a path leads to through its links. The file need not exist.
Result<fs::path> TargetOf(const fs::path& file) {
  if (file.empty()) return FailWith(std::errc::no_such_file_or_directory);
  // The system would cut the path at the NUL.
  if (HasNul(file.native())) return FailWith(std::errc::invalid_argument);
  std::error_code error;
  fs::path target = fs::weakly_canonical(file, error);
  // Only dangling links are left.
  for (int links = 0; !error && fs::is_symlink(fs::symlink_status(target)); ++links) {
    if (links == kMostLinks) return FailWith(std::errc::too_many_symbolic_link_levels);
    const fs::path next = fs::read_symlink(target, error);
    if (!error) target = fs::weakly_canonical(target.parent_path() / next, error);
  }
  if (error) return FailWith(error);
  return target;
}

Result<void> WriteAll(int file, std::string_view contents) {
  while (!contents.empty()) {
    const ssize_t written = write(file, contents.data(), contents.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return FailWithErrno();
    contents.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

// Makes a rename or a new file durable. Failing to is no error: the contents are in place.
void FlushFolderOf(const fs::path& file) {
  const FileDescriptor folder(open(file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder) fsync(folder.get());
}

struct Present {
  bool isThere = false;
  mode_t mode = 0;
};

// The state of a path; fails for anything but a writable regular file or nothing.
Result<Present> PresentAt(const fs::path& file) {
  struct stat status;
  if (stat(file.c_str(), &status) != 0) {
    if (errno == ENOENT) return Present{};
    return FailWithErrno();
  }
  if (S_ISDIR(status.st_mode)) return FailWith(std::errc::is_a_directory);
  if (!S_ISREG(status.st_mode)) return FailWith(std::errc::operation_not_supported);
  if (faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) != 0) return FailWithErrno();
  return Present{true, status.st_mode & 07777};
}

// A temporary file beside its target; removed unless it has replaced the target.
class Replacement {
 public:
  Replacement(const fs::path& target, mode_t mode) {
    // Not derived from the target's name, which may have the greatest length already.
    for (int attempt = 0; attempt < kMostNames && !file_; ++attempt) {
      name_ = target.parent_path() / RandomName();
      file_ = FileDescriptor(open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
      if (!file_ && errno != EEXIST) return;
    }
  }
  Replacement(const Replacement&) = delete;
  ~Replacement() {
    if (file_ && !name_.empty()) unlink(name_.c_str());
  }

  [[nodiscard]] Result<void> Write(std::string_view contents) {
    if (!file_) return FailWithErrno();
    return WriteAll(file_.get(), contents);
  }

  [[nodiscard]] Result<void> TakePlaceOf(const fs::path& target, const Present& present, Durability durability) {
    if (present.isThere && fchmod(file_.get(), present.mode) != 0) return FailWithErrno();
    if (durability == Durability::OnDisk && fsync(file_.get()) != 0) return FailWithErrno();
    if (rename(name_.c_str(), target.c_str()) != 0) return FailWithErrno();
    name_.clear();
    if (durability == Durability::OnDisk) FlushFolderOf(target);
    return {};
  }

 private:
  static std::string RandomName() {
    std::uint64_t number = 0;
    arc4random_buf(&number, sizeof number);
    std::array<char, 32> name;
    const int length = std::snprintf(name.data(), name.size(), ".new-%016jx", static_cast<std::uintmax_t>(number));
    return {name.data(), static_cast<std::size_t>(length)};
  }

  fs::path name_;
  FileDescriptor file_;
};

Result<void> Replace(const fs::path& file, std::string_view contents, NewFile access, Durability durability) {
  const auto target = TargetOf(file);
  if (!target) return tl::unexpected(target.error());
  const auto present = PresentAt(*target);
  if (!present) return tl::unexpected(present.error());
  Replacement replacement(*target, ModeOf(present->isThere ? NewFile::ForUserOnly : access));
  return replacement.Write(contents).and_then([&] { return replacement.TakePlaceOf(*target, *present, durability); });
}

}  // namespace

Result<FileDescriptor> OpenToRead(const fs::path& file) noexcept {
  if (HasNul(file.native())) return FailWith(std::errc::invalid_argument);
  FileDescriptor opened(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status;
  if (!opened || fstat(opened.get(), &status) != 0) return FailWithErrno();
  if (!S_ISREG(status.st_mode)) return Fail(ENOTSUP, "not a regular file");
  return opened;
}

Result<std::string> ReadFile(const fs::path& file, std::size_t most, Longer longer) noexcept {
  const auto opened = OpenToRead(file);
  if (!opened) return tl::unexpected(opened.error());
  struct stat status;
  if (fstat(opened->get(), &status) != 0) return FailWithErrno();
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size > most && longer == Longer::Fails) return FailWith(std::errc::file_too_large);
  std::string bytes(std::min(size, most), '\0');
  std::size_t length = 0;
  while (length < bytes.size()) {
    const ssize_t count = read(opened->get(), bytes.data() + length, bytes.size() - length);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return FailWithErrno();
    if (count == 0) break;
    length += static_cast<std::size_t>(count);
  }
  bytes.resize(length);
  return bytes;
}

Result<void> ReplaceFile(const fs::path& file, std::string_view contents, NewFile access) noexcept {
  return Replace(file, contents, access, Durability::OnDisk);
}

Result<void> ReplaceTransientFile(const fs::path& file, std::string_view contents) noexcept {
  return Replace(file, contents, NewFile::ForUserOnly, Durability::Transient);
}

Result<void> AppendToFile(const fs::path& file, std::string_view contents, NewFile access) noexcept {
  const auto target = TargetOf(file);
  if (!target) return tl::unexpected(target.error());
  const auto present = PresentAt(*target);
  if (!present) return tl::unexpected(present.error());
  const FileDescriptor end(
      open(target->c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, ModeOf(access)));
  struct stat before;
  if (!end || fstat(end.get(), &before) != 0) return FailWithErrno();
  Result<void> written = WriteAll(end.get(), contents);
  if (written && fsync(end.get()) != 0) written = FailWithErrno();
  if (written) {
    if (!present->isThere) FlushFolderOf(*target);
    return {};
  }
  // Undo a partial write.
  if (present->isThere)
    static_cast<void>(ftruncate(end.get(), before.st_size) == 0);
  else
    unlink(target->c_str());
  return written;
}

TemporaryFile::TemporaryFile(std::string_view extension) noexcept {
  std::error_code error;
  std::string name = fs::temp_directory_path(error) / "tessaro-XXXXXX";
  name += extension;
  const FileDescriptor file(mkstemps(name.data(), static_cast<int>(extension.size())));
  if (file) path_ = std::move(name);
}

TemporaryFile::~TemporaryFile() {
  std::error_code error;
  if (!path_.empty()) fs::remove(path_, error);
}

}  // namespace tessaro::platform
