#include "Platform/Linux/Cocoa/CompactMemory.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace tessaro::platform {

namespace {

#if __has_feature(address_sanitizer)
// Pieces of a slab would hide from it who uses what after its end.
constexpr bool kUseSlabs = false;
#else
constexpr bool kUseSlabs = true;
#endif

constexpr std::size_t kSlabSize = 64 * 1024;
constexpr std::size_t kAlignment = alignof(std::max_align_t);
constexpr std::size_t kLargestPiece = 4 * 1024;

constexpr std::size_t RoundUp(std::size_t size, std::size_t step) { return (size + step - 1) / step * step; }

// Stands at the beginning of its memory, whose address is a multiple of the slab size: so each piece finds it.
struct alignas(kAlignment) Slab {
  std::atomic<std::uint32_t> users{1};  // the pieces in use, and the thread that hands them out
  std::size_t used = sizeof(Slab);

  static Slab* Make(std::size_t size) {
    void* memory = std::aligned_alloc(kSlabSize, RoundUp(size, kSlabSize));
    return memory == nullptr ? nullptr : new (memory) Slab;
  }

  static Slab* Of(void* piece) {
    return reinterpret_cast<Slab*>(reinterpret_cast<std::uintptr_t>(piece) & ~(kSlabSize - 1));
  }

  [[nodiscard]] bool HasRoom(std::size_t size) const { return used + size <= kSlabSize; }

  // Only its own thread adds users, so no piece can come into use meanwhile.
  void Reuse() {
    if (users.load(std::memory_order_acquire) == 1) used = sizeof(Slab);
  }

  void* Take(std::size_t size) {
    users.fetch_add(1, std::memory_order_relaxed);
    void* piece = reinterpret_cast<char*>(this) + used;
    used += size;
    return piece;
  }

  void Leave() {
    if (users.fetch_sub(1, std::memory_order_acq_rel) == 1) std::free(this);
  }
};

struct CurrentSlab {
  Slab* slab = nullptr;

  ~CurrentSlab() {
    if (slab != nullptr) slab->Leave();
  }

  void* Take(std::size_t size) {
    if (slab != nullptr && !slab->HasRoom(size)) slab->Reuse();
    if (slab == nullptr || !slab->HasRoom(size)) {
      if (slab != nullptr) slab->Leave();
      slab = Slab::Make(kSlabSize);
    }
    return slab == nullptr ? nullptr : slab->Take(size);
  }
};

thread_local CurrentSlab currentSlab;

void* TakeLarge(std::size_t size) {
  Slab* slab = Slab::Make(sizeof(Slab) + size);
  // Its only user is the piece.
  return slab == nullptr ? nullptr : slab + 1;
}

}  // namespace

void* AllocateCompactMemory(std::size_t size) noexcept {
  if constexpr (!kUseSlabs) return std::malloc(size);
  return size > kLargestPiece ? TakeLarge(size) : currentSlab.Take(RoundUp(size, kAlignment));
}

void FreeCompactMemory(void* memory) noexcept {
  if constexpr (!kUseSlabs) return std::free(memory);
  Slab::Of(memory)->Leave();
}

}  // namespace tessaro::platform
