#pragma once

#include <cstddef>
#include <functional>
#include <new>
#include <utility>

// When something that lives as long as the process ends its work. Stages end in this order; within one, what was made
// last ends first.
enum class EndStage { Script, Services, MainQueue, Bus, Log };

// Calls `close` once, on the main thread, when the script environment ends.
void AtEnd(EndStage stage, std::function<void()> close);

// Calls everything that waits for the end. Main thread only.
void EndAll();

// An object that lives as long as the process: a static of this type is made at its first use and never destroyed,
// because other threads and late callbacks may still use it while the process exits. A `T` with Close() and kEnd, an
// EndStage, is closed when the script environment ends.
template <typename T>
class Forever {
 public:
  template <typename... Arguments>
  explicit Forever(Arguments&&... arguments) {
    new (storage_) T(std::forward<Arguments>(arguments)...);
    if constexpr (requires(T & object) { object.Close(); }) AtEnd(T::kEnd, [this] { get().Close(); });
  }
  Forever(const Forever&) = delete;
  Forever& operator=(const Forever&) = delete;

  [[nodiscard]] T& get() { return *std::launder(reinterpret_cast<T*>(storage_)); }
  T& operator*() { return get(); }
  T* operator->() { return &get(); }

 private:
  alignas(T) std::byte storage_[sizeof(T)];
};
