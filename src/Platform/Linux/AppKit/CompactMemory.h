#pragma once

#include <cstddef>

// Memory for many small objects that come and go together, like those of one JSON document. Each thread hands out
// pieces of its current slab one behind the other; a slab is returned to the system when its last piece is free, so
// an object that is kept holds on to 64 KB at the most. Any thread may free a piece.
namespace tessaro::platform {

// Aligned for any object; nullptr when there is no memory.
[[nodiscard]] void* AllocateCompactMemory(std::size_t size) noexcept;

// `size` is what was asked for.
void FreeCompactMemory(void* memory, std::size_t size) noexcept;

}  // namespace tessaro::platform
