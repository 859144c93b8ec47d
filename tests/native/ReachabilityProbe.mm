#include <mutex>
#include <string>

#include "Base/Ref.h"
#include "Platform/MainQueue.h"
#include "Probe.h"
#include "Reachability/TsReachability.h"
#include "Utilities/TsNotificationObserver.h"

namespace platform = tessaro::platform;

namespace {

// A target whose flags the test chooses: no Linux machine has connections that must be dialled.
class ChosenTarget final : public platform::NetworkReachability {
 public:
  explicit ChosenTarget(std::optional<platform::ReachabilityFlags> flags) : flags_(flags) {}

  [[nodiscard]] std::optional<platform::ReachabilityFlags> Flags() const noexcept override { return flags_; }
  [[nodiscard]] bool Watch(std::shared_ptr<platform::SerialQueue>, Changed) noexcept override { return false; }
  void Unwatch() noexcept override {}

 private:
  std::optional<platform::ReachabilityFlags> flags_;
};

// A target's name, or the flags that it has; nil for flags that can't be read.
TsReachability* MonitorOf(id target) {
  if (NSString* name = As<NSString>(target)) {
    if ([name isEqual:@"internet"]) return [TsReachability reachabilityForInternetConnection];
    if ([name isEqual:@"local WiFi"]) return [TsReachability reachabilityForLocalWiFi];
    return [TsReachability reachabilityWithHostName:name];
  }
  std::optional<platform::ReachabilityFlags> flags;
  if (target != nil) flags = [target unsignedIntValue];
  return Adopt([[TsReachability alloc] initWithReachabilityRef:std::make_shared<ChosenTarget>(flags)]).Autoreleased();
}

// Nil where there can be no monitor.
id monitor(id target) { return MonitorOf(target); }

struct Seen {
  std::string text;
  std::mutex mutex;

  void Add(const char* what) {
    const std::lock_guard lock(mutex);
    text += what;
    text += platform::MainQueue::IsMainThread() ? "! " : " ";
  }
};

Seen& WhatIsSeen() {
  static Seen seen;
  return seen;
}

// Starts a monitor that only itself keeps. seen() gives the calls of its blocks; "!" marks those on the main thread.
bool watch(NSString* target) {
  TsReachability* monitor = MonitorOf(target);
  [monitor setReachableBlock:[](TsReachability*) { WhatIsSeen().Add("reachable"); }];
  [monitor setUnreachableBlock:[](TsReachability*) { WhatIsSeen().Add("unreachable"); }];
  [monitor setReachabilityBlock:[](TsReachability*) { WhatIsSeen().Add("changed"); }];
  TsObserveOnMainQueue(kTsReachabilityChangedNotification, [monitor](NSNotification* notification) {
    if ([notification object] == monitor) WhatIsSeen().Add("notified");
  });
  return [monitor startNotifier] != NO;
}

std::string seen() {
  const std::lock_guard lock(WhatIsSeen().mutex);
  return WhatIsSeen().text;
}

PROBES("reachability", monitor, watch, seen);

}  // namespace
