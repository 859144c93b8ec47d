#include "Platform/Linux/Alerts/AlertFiles.h"

#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

#include "Platform/FileWriting.h"
#include "Platform/Linux/Base/GLibOwners.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr char kExtension[] = ".alert";

std::string ContentsOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace

std::vector<AlertFiles::File> AlertFiles::All() const noexcept {
  std::vector<File> files;
  std::error_code error;
  for (fs::directory_iterator each(directory_, error), end; !error && each != end; each.increment(error)) {
    // Opening a pipe would wait for its other end.
    if (each->path().extension() == kExtension && each->is_regular_file(error)) {
      files.push_back({each->path(), ContentsOf(each->path())});
    }
  }
  return files;
}

fs::path AlertFiles::Keep(std::string_view contents) const noexcept {
  std::error_code error;
  fs::create_directories(directory_, error);
  fs::permissions(directory_, fs::perms::owner_all, error);
  const GTextPtr name(g_uuid_string_random());
  fs::path file = directory_ / (std::string(name.get()) + kExtension);
  // For the person only: it is their mail.
  return ReplaceFile(file, contents, NewFile::ForUserOnly) ? fs::path() : file;
}

void AlertFiles::Remove(const fs::path& file) noexcept {
  std::error_code error;
  fs::remove(file, error);
}

}  // namespace tessaro::platform
