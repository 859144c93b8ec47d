#include "Platform/OperatingSystem.h"

#include <sys/utsname.h>

#include <cerrno>

#include "Platform/Linux/Base/GLibOwners.h"

namespace tessaro::platform {

std::string Version() {
  if (const GTextPtr version{g_get_os_info(G_OS_INFO_KEY_VERSION_ID)}) return version.get();
  // Rolling distributions have no version of their own.
  utsname kernel{};
  return uname(&kernel) == 0 ? kernel.release : "";
}

bool IsAtLeastMacOS(int, int) { return false; }

KernelVariable ReadKernelVariable(std::string_view) { return {.error = ENOENT}; }

}  // namespace tessaro::platform
