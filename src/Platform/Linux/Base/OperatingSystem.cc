#include "Platform/OperatingSystem.h"

#include <sys/utsname.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <optional>

namespace tessaro::platform {

namespace {

constexpr std::string_view kVersionKey = "VERSION_ID=";

std::string WithoutQuotes(std::string text) {
  if (text.size() >= 2 && (text.front() == '"' || text.front() == '\'') && text.back() == text.front()) {
    return text.substr(1, text.size() - 2);
  }
  return text;
}

std::optional<std::string> DistributionVersion(const char* file) {
  std::ifstream lines(file);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(kVersionKey)) return WithoutQuotes(line.substr(kVersionKey.size()));
  }
  return std::nullopt;
}

std::string KernelRelease() {
  utsname name{};
  return uname(&name) == 0 ? name.release : "";
}

}  // namespace

std::string Version() {
  for (const char* file : {"/etc/os-release", "/usr/lib/os-release"}) {
    if (auto version = DistributionVersion(file)) return *version;
  }
  // Rolling distributions have no version of their own.
  return KernelRelease();
}

bool IsAtLeastMacOS(int, int) { return false; }

KernelVariable ReadKernelVariable(std::string_view name) {
  if (name.empty() || name.find('/') != std::string_view::npos || name.find("..") != std::string_view::npos) {
    return {.error = EINVAL};
  }
  std::string path = "/proc/sys/" + std::string(name);
  std::replace(path.begin() + 10, path.end(), '.', '/');
  errno = 0;
  std::ifstream file(path);
  if (!file) return {.error = errno != 0 ? errno : ENOENT};
  KernelVariable variable;
  if (!(file >> variable.value)) return {.error = EINVAL};
  return variable;
}

}  // namespace tessaro::platform
