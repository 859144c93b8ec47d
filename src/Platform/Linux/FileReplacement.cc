#include "Platform/FileReplacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <utility>

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

std::error_code LastError() { return {errno, std::generic_category()}; }

class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(const Descriptor&) = delete;
  ~Descriptor() {
    if (fd_ >= 0) close(fd_);
  }

  [[nodiscard]] bool IsOpen() const { return fd_ >= 0; }
  operator int() const { return fd_; }

 private:
  int fd_;
};

// A file beside the one it will replace; gone at the end of its life unless it has done so.
class Replacement {
 public:
  explicit Replacement(const fs::path& target)
      : name_(target.native() + ".XXXXXX"), fd_(mkostemp(name_.data(), O_CLOEXEC)) {}
  Replacement(const Replacement&) = delete;
  ~Replacement() {
    if (fd_.IsOpen() && !name_.empty()) unlink(name_.c_str());
  }

  [[nodiscard]] std::error_code Write(std::string_view contents) {
    if (!fd_.IsOpen()) return LastError();
    while (!contents.empty()) {
      const ssize_t written = write(fd_, contents.data(), contents.size());
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) return LastError();
      contents.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
  }

  [[nodiscard]] std::error_code TakePlaceOf(const fs::path& target) {
    struct stat status;
    if (stat(target.c_str(), &status) == 0 && fchmod(fd_, status.st_mode & 07777) != 0) return LastError();
    if (fsync(fd_) != 0 || rename(name_.c_str(), target.c_str()) != 0) return LastError();
    name_.clear();
    return {};
  }

 private:
  std::string name_;
  Descriptor fd_;
};

}  // namespace

std::error_code ReplaceFile(const fs::path& file, std::string_view contents) noexcept {
  std::error_code error;
  const fs::path target = fs::weakly_canonical(file, error);
  if (error) return error;
  Replacement replacement(target);
  if ((error = replacement.Write(contents))) return error;
  if ((error = replacement.TakePlaceOf(target))) return error;
  // The file has its new contents already: that the folder could not be flushed is no failure.
  const Descriptor folder(open(target.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.IsOpen()) fsync(folder);
  return {};
}

}  // namespace tessaro::platform
