#include "Platform/OperatingSystem.h"

#import <Foundation/Foundation.h>
#include <sys/sysctl.h>

#include <cerrno>

// NSProcessInfo and sysctlbyname(); any thread, no consent. macOS 11 reports 10.16 to
// programs built with an older SDK.
namespace tessaro::platform {

std::string Version() {
  const NSOperatingSystemVersion version = [[NSProcessInfo processInfo] operatingSystemVersion];
  std::string text = std::to_string(version.majorVersion) + "." + std::to_string(version.minorVersion);
  if (version.patchVersion > 0) text += "." + std::to_string(version.patchVersion);
  return text;
}

bool IsAtLeastMacOS(int major, int minor) {
  return [[NSProcessInfo processInfo] isOperatingSystemAtLeastVersion:{major, minor, 0}];
}

KernelVariable ReadKernelVariable(std::string_view name) {
  KernelVariable variable;
  std::size_t length = sizeof variable.value;
  if (sysctlbyname(std::string(name).c_str(), &variable.value, &length, nullptr, 0) != 0) variable = {0, errno};
  return variable;
}

}  // namespace tessaro::platform
