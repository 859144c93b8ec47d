#include "Platform/macOS/RunLoopPump.h"

#include <CoreFoundation/CoreFoundation.h>

#include "Base/UvHandle.h"
#include "Platform/macOS/CFRef.h"

namespace tessaro::platform {

namespace {

constexpr std::uint64_t kInterval = 10;  // milliseconds
constexpr int kMostSources = 64;

struct Pump {
  UvHandle<uv_timer_t> timer;

  void Tick() {
    // Inside a running loop libuv is turned by the host.
    if (CFRef(CFRunLoopCopyCurrentMode(CFRunLoopGetMain()))) return timer.reset();
    for (int i = 0; i < kMostSources; ++i) {
      if (CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, true) != kCFRunLoopRunHandledSource) return;
    }
  }
};

Pump& ThePump() {
  [[clang::no_destroy]] static Pump pump;
  return pump;
}

}  // namespace

void RunLoopPump::Start() {
  Pump& pump = ThePump();
  if (pump.timer) return;
  pump.timer = MakeUvHandle<uv_timer_t>(&pump, uv_timer_init);
  uv_timer_start(
      pump.timer.get(), [](uv_timer_t* timer) { OwnerOf<Pump>(timer).Tick(); }, kInterval, kInterval);
}

void RunLoopPump::Stop() { ThePump().timer.reset(); }

}  // namespace tessaro::platform
