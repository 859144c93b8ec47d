#include "Platform/Linux/Base/BusService.h"

#include <systemd/sd-bus-protocol.h>

#include <utility>

#include "Platform/Common/AutoreleaseScope.h"

namespace tessaro::platform {

namespace {

bool IsMissedDeadline(const sdbus::Error& error) {
  return error.getName() == SD_BUS_ERROR_TIMEOUT || error.getName() == SD_BUS_ERROR_NO_REPLY;
}

}  // namespace

void BusService::JoinBus() noexcept {
  if (std::exchange(hasJoined_, true)) return;
  const auto disappear = [this] {
    retry_.reset();
    Disappear();
  };
  subscription_ = SessionBus::Shared().Listen({[this] { TryToAppear(); }, disappear});
}

void BusService::LeaveBus() noexcept {
  subscription_ = {};
  retry_.reset();
  if (std::exchange(hasJoined_, false)) Disappear();
}

void BusService::TryToAppear() noexcept {
  try {
    Appear(*SessionBus::Shared().Connection());
    retryDelay_ = kFirstRetry;
  } catch (const sdbus::Error& error) {
    Disappear();
    if (!IsMissedDeadline(error)) return;
    retry_ = MakeUvHandle<uv_timer_t>(this, uv_timer_init);
    uv_timer_start(
        retry_.get(),
        [](uv_timer_t* handle) { WithAutoreleasePool([handle] { OwnerOf<BusService>(handle).TryToAppear(); }); },
        static_cast<std::uint64_t>(retryDelay_.count()), 0);
    retryDelay_ *= 2;
  }
}

}  // namespace tessaro::platform
