#include "Platform/Linux/AppKit/CompactMemory.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>
#include <utility>

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
//
// While a thread hands out pieces it counts them without the cost of an atomic operation; what other threads return
// meanwhile is taken off `shared`, which begins so high that it can't reach zero. When the thread leaves the slab, its
// own count is put in place of that height, and whoever takes the last one off frees the slab.
class alignas(kAlignment) Slab {
 public:
  static Slab* Make() {
    void* memory = SpareSlabs::Shared().Take();
    if (memory == nullptr) memory = std::aligned_alloc(kSlabSize, kSlabSize);
    return memory == nullptr ? nullptr : new (memory) Slab;
  }

  static Slab* Of(void* piece) {
    return reinterpret_cast<Slab*>(reinterpret_cast<std::uintptr_t>(piece) & ~(kSlabSize - 1));
  }

  // For the thread that hands out pieces.

  [[nodiscard]] bool HasRoom(std::size_t size) const { return used_ + size <= kSlabSize; }

  void* Take(std::size_t size) {
    ++own_;
    void* piece = End();
    used_ += size;
    return piece;
  }

  void Return(void* piece, std::size_t size) {
    --own_;
    // What lives for a moment only is followed by the next of its kind, in memory that is still in the caches.
    if (static_cast<char*>(piece) + size == End()) used_ -= size;
  }

  void ReuseIfEmpty() {
    if (kManyUsers - shared_.load(std::memory_order_acquire) != own_) return;
    shared_.store(kManyUsers, std::memory_order_relaxed);
    own_ = 0;
    used_ = sizeof(Slab);
  }

  void Leave() { TakeOff(kManyUsers - own_); }

  // For every other thread, and for this one when it has left the slab.

  void ReturnFromElsewhere() { TakeOff(1); }

 private:
  static constexpr std::int64_t kManyUsers = std::int64_t{1} << 40;

  [[nodiscard]] char* End() { return reinterpret_cast<char*>(this) + used_; }

  void TakeOff(std::int64_t users) {
    if (shared_.fetch_sub(users, std::memory_order_acq_rel) != users) return;
    if (!SpareSlabs::Shared().Keep(this)) std::free(this);
  }

  std::atomic<std::int64_t> shared_{kManyUsers};
  std::int64_t own_ = 0;
  std::size_t used_ = sizeof(Slab);
};

// The slab that this thread hands out pieces of. Eight bytes of the thread's own block, which spares a call.
constinit thread_local Slab* currentSlab __attribute__((tls_model("initial-exec"))) = nullptr;

void LeaveCurrentSlab() {
  if (Slab* slab = std::exchange(currentSlab, nullptr)) slab->Leave();
}

void StartNewSlab() {
  // The thread's end; reached only now, as asking for an object with a destructor costs at every piece.
  static thread_local const struct ThreadEnd {
    ~ThreadEnd() { LeaveCurrentSlab(); }
  } atThreadEnd;
  static_cast<void>(atThreadEnd);

  LeaveCurrentSlab();
  currentSlab = Slab::Make();
}

void* TakePiece(std::size_t size) {
  if (currentSlab != nullptr && !currentSlab->HasRoom(size)) currentSlab->ReuseIfEmpty();
  if (currentSlab == nullptr || !currentSlab->HasRoom(size)) StartNewSlab();
  return currentSlab == nullptr ? nullptr : currentSlab->Take(size);
}

void ReturnPiece(void* piece, std::size_t size) {
  Slab* slab = Slab::Of(piece);
  if (slab == currentSlab) {
    slab->Return(piece, size);
  } else {
    slab->ReturnFromElsewhere();
  }
}

constexpr bool IsPiece(std::size_t size) { return kUseSlabs && size <= kLargestPiece; }

}  // namespace

void* AllocateCompactMemory(std::size_t size) noexcept {
  return IsPiece(size) ? TakePiece(RoundUp(size, kAlignment)) : std::malloc(size);
}

void FreeCompactMemory(void* memory, std::size_t size) noexcept {
  if (!IsPiece(size)) return std::free(memory);
  ReturnPiece(memory, RoundUp(size, kAlignment));
}

}  // namespace tessaro::platform
