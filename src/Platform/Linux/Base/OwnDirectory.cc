#include "Platform/Linux/Base/OwnDirectory.h"

#include <dlfcn.h>

namespace tessaro::platform {

std::filesystem::path OwnDirectory() noexcept {
  Dl_info module{};
  dladdr(reinterpret_cast<void*>(&OwnDirectory), &module);
  return std::filesystem::path(module.dli_fname).parent_path();
}

}  // namespace tessaro::platform
