#include "Platform/Linux/Base/BusService.h"

#include <utility>

namespace tessaro::platform {

void BusService::JoinBus() noexcept {
  if (std::exchange(hasJoined_, true)) return;
  const auto appear = [this] {
    const auto appeared = TryOnBus([this] { Appear(*SessionBus::Shared().Connection()); });
    if (!appeared) Disappear();
  };
  subscription_ = SessionBus::Shared().Listen({appear, [this] { Disappear(); }});
}

void BusService::LeaveBus() noexcept {
  subscription_ = {};
  if (std::exchange(hasJoined_, false)) Disappear();
}

}  // namespace tessaro::platform
