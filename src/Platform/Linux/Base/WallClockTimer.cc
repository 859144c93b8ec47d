#include "Platform/Linux/Base/WallClockTimer.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "Base/TsLog.h"
#include "Platform/Common/AutoreleaseScope.h"

namespace tessaro::platform {

namespace {

// A moment of 0 would stop the timer. The upper limit is the year 2286.
constexpr double kEarliest = 1;
constexpr double kLatest = 1e10;

itimerspec At(WallClockTimer::Seconds due) {
  const double seconds = std::clamp(due.count(), kEarliest, kLatest);
  itimerspec moment{};
  moment.it_value.tv_sec = static_cast<time_t>(seconds);
  moment.it_value.tv_nsec = static_cast<long>((seconds - std::floor(seconds)) * 1e9);
  return moment;
}

}  // namespace

void WallClockTimer::Set(std::optional<Seconds> due) noexcept {
  if (!due) return Stop();
  if (!descriptor_) descriptor_ = FileDescriptor(timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC));
  const itimerspec moment = At(*due);
  const bool isSet =
      timerfd_settime(descriptor_.get(), TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &moment, nullptr) == 0;
  if (!isSet || poll_) return;
  poll_ = MakeUvHandle<uv_poll_t>(this, uv_poll_init, descriptor_.get());
  if (!poll_) {
    TsLogTextError("The event loop does not watch the clock: scheduled alerts will be late");
    return Stop();
  }
  uv_poll_start(poll_.get(), UV_READABLE, [](uv_poll_t* handle, int, int) { OwnerOf<WallClockTimer>(handle).Fire(); });
}

void WallClockTimer::Stop() noexcept {
  // libuv lets go of the descriptor at once, and of the handle later.
  poll_.reset();
  descriptor_ = {};
}

void WallClockTimer::Fire() noexcept {
  // Reading clears the timer. It fails after the clock was set, which is a reason to check the time, too.
  std::uint64_t times = 0;
  static_cast<void>(!read(descriptor_.get(), &times, sizeof(times)));
  WithAutoreleasePool(handler_);
}

}  // namespace tessaro::platform
