#include "Platform/Linux/Base/WallClockTimer.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "Platform/Common/AutoreleaseScope.h"

#include "Base/TsLog.h"

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

WallClockTimer::WallClockTimer(std::function<void()> handler) : handler_(std::move(handler)) {}

WallClockTimer::~WallClockTimer() { Stop(); }

void WallClockTimer::Set(std::optional<Seconds> due) noexcept {
  if (due) {
    Start(*due);
  } else {
    Stop();
  }
}

void WallClockTimer::Start(Seconds due) noexcept {
  if (descriptor_ < 0) descriptor_ = timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC);
  if (descriptor_ < 0) return;
  const itimerspec moment = At(due);
  timerfd_settime(descriptor_, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &moment, nullptr);
  if (poll_) return;
  poll_ = MakeUvHandle<uv_poll_t>(this, uv_poll_init, descriptor_);
  if (!poll_) {
    TsLogTextError("The event loop does not watch the clock: scheduled alerts will be late");
    return Stop();
  }
  uv_poll_start(poll_.get(), UV_READABLE, [](uv_poll_t* handle, int, int) { OwnerOf<WallClockTimer>(handle).Fire(); });
}

void WallClockTimer::Stop() noexcept {
  // libuv lets go of the descriptor at once, and of the handle later.
  poll_.reset();
  if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
}

void WallClockTimer::Fire() noexcept {
  // Reading tells how often it fired, or fails because the clock was set: both are reasons to look at the time.
  std::uint64_t times = 0;
  static_cast<void>(!read(descriptor_, &times, sizeof(times)));
  WithAutoreleasePool(handler_);
}

}  // namespace tessaro::platform
