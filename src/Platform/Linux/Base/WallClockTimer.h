#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <utility>

#include "Base/UvHandle.h"
#include "Platform/Common/FileDescriptor.h"

namespace tessaro::platform {

// Calls its handler when the wall clock reaches a moment, even if the machine has slept, and whenever the clock is set:
// the handler checks the time and sets the timer again. Main thread only; does not keep the process alive.
class WallClockTimer {
 public:
  using Seconds = std::chrono::duration<double>;

  explicit WallClockTimer(std::function<void()> handler) : handler_(std::move(handler)) {}
  WallClockTimer(const WallClockTimer&) = delete;
  WallClockTimer& operator=(const WallClockTimer&) = delete;

  // In seconds since 1970; nothing stops the timer.
  void Set(std::optional<Seconds> due) noexcept;

 private:
  void Stop() noexcept;
  void Fire() noexcept;

  const std::function<void()> handler_;
  FileDescriptor descriptor_;
  UvHandle<uv_poll_t> poll_;
};

}  // namespace tessaro::platform
