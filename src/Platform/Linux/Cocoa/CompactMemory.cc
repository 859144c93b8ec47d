#include "Platform/Linux/Cocoa/CompactMemory.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <mutex>
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
constexpr std::size_t kSpareSlabs = 64;
constexpr std::size_t kLargestPiece = 4 * 1024;

constexpr std::size_t RoundUp(std::size_t size, std::size_t step) { return (size + step - 1) / step * step; }

// Empty slabs that wait for their next use: giving memory back to the system and asking for it again costs as much as
// making all the objects in it.
class SpareSlabs {
 public:
  static SpareSlabs& Shared() {
    static SpareSlabs slabs;
    return slabs;
  }

  // nullptr when there is none.
  void* Take() {
    const std::lock_guard lock(mutex_);
    return count_ == 0 ? nullptr : slabs_[--count_];
  }

  // False when there are enough.
  bool Keep(void* slab) {
    const std::lock_guard lock(mutex_);
    if (count_ == slabs_.size()) return false;
    slabs_[count_++] = slab;
    return true;
  }

 private:
  std::mutex mutex_;
  std::size_t count_ = 0;
  std::array<void*, kSpareSlabs> slabs_{};
};

// Stands at the beginning of its memory, whose address is a multiple of the slab size: so each piece finds it.
struct alignas(kAlignment) Slab {
  std::atomic<std::uint32_t> users{1};  // the pieces in use, and the thread that hands them out
  std::size_t used = sizeof(Slab);

  static Slab* Make() { return Construct(SpareSlabs::Shared().Take(), kSlabSize, false); }

  // For one piece that is larger than a slab hands out. Its only user is the piece.
  static Slab* MakeLarge(std::size_t size) { return Construct(nullptr, sizeof(Slab) + size, true); }

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
    if (users.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    if (isLarge_ || !SpareSlabs::Shared().Keep(this)) std::free(this);
  }

 private:
  static Slab* Construct(void* memory, std::size_t size, bool isLarge) {
    if (memory == nullptr) memory = std::aligned_alloc(kSlabSize, RoundUp(size, kSlabSize));
    if (memory == nullptr) return nullptr;
    auto* slab = new (memory) Slab;
    slab->isLarge_ = isLarge;
    return slab;
  }

  bool isLarge_ = false;
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
      slab = Slab::Make();
    }
    return slab == nullptr ? nullptr : slab->Take(size);
  }
};

thread_local CurrentSlab currentSlab;

void* TakeLarge(std::size_t size) {
  Slab* slab = Slab::MakeLarge(size);
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
