#include "Platform/LargePages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace tessaro::platform {

void PreferLargePages(void* start, std::size_t length) noexcept {
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto address = reinterpret_cast<std::uintptr_t>(start);
  const std::uintptr_t first = (address + page - 1) / page * page;
  const std::uintptr_t end = (address + length) / page * page;
  if (first < end) madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
}

}  // namespace tessaro::platform
