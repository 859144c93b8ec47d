#include "Platform/HFSPath.h"

#include <algorithm>
#include <vector>

#include "Base/TextPieces.h"

namespace tessaro::platform {

namespace {

// ':' is legal in POSIX names and '/' in HFS names: swap them.
std::string PosixName(std::string_view name) {
  std::string posixName(name);
  std::replace(posixName.begin(), posixName.end(), '/', ':');
  return posixName;
}

}  // namespace

std::optional<std::string> PosixPathOfHFSPath(std::string_view path) {
  // POSIX names may contain colons: a path from the root, or without a volume, is a POSIX path.
  if (path.empty() || path.front() == '/' || path.front() == ':') return std::nullopt;
  const auto parts = Split(path, ':');
  // Every volume is taken for the boot volume: there is one file tree.
  std::vector<std::string> names;
  for (auto part = parts.begin() + 1; part != parts.end(); ++part) {
    if (!part->empty()) {
      names.push_back(PosixName(*part));
    } else if (part + 1 != parts.end()) {
      // An empty part goes up; a colon at the end only marks a folder.
      if (names.empty()) return std::nullopt;
      names.pop_back();
    }
  }
  std::string posixPath;
  for (const std::string& name : names) posixPath.append("/").append(name);
  return posixPath.empty() ? "/" : posixPath;
}

}  // namespace tessaro::platform
