#pragma once

#include <cstddef>

namespace tessaro::platform {

// Says that a large piece of memory is going to be filled: where the system can give it in large pages, filling it
// costs a third. A wish, and without effect on what is in the memory. Any thread.
void PreferLargePages(void* start, std::size_t length) noexcept;

}  // namespace tessaro::platform
