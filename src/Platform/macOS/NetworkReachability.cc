#include "Platform/NetworkReachability.h"

#include <SystemConfiguration/SystemConfiguration.h>
#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstring>
#include <utility>

#include "Platform/MainQueue.h"
#include "Platform/macOS/CFRef.h"

// SCNetworkReachability, whose flags have the contract's values; deprecated in 14.4, and there. Changes are announced
// on a queue of ours and passed on. The system may look a name up while it is asked for flags. Any thread; no consent.
namespace tessaro::platform {

namespace {

constexpr std::chrono::seconds kLongestWait{2};

using Target = std::shared_ptr<const CFRef<SCNetworkReachabilityRef>>;

std::optional<ReachabilityFlags> FlagsOf(const Target& target) {
  SCNetworkReachabilityFlags flags = 0;
  if (!SCNetworkReachabilityGetFlags(target->get(), &flags)) return std::nullopt;
  return flags;
}

struct Watcher {
  std::shared_ptr<SerialQueue> queue;
  NetworkReachability::Changed changed;
};
using SharedWatcher = std::shared_ptr<const Watcher>;

// The system counts references to what it gives to the callback.
const void* RetainWatcher(const void* watcher) {
  return new SharedWatcher(*static_cast<const SharedWatcher*>(watcher));
}
void ReleaseWatcher(const void* watcher) { delete static_cast<const SharedWatcher*>(watcher); }

void Announce(SCNetworkReachabilityRef, SCNetworkReachabilityFlags flags, void* context) {
  const SharedWatcher watcher = *static_cast<const SharedWatcher*>(context);
  watcher->queue->Post([watcher, flags] { watcher->changed(flags); });
}

dispatch_queue_t AnnouncementQueue() {
  static const dispatch_queue_t queue = dispatch_queue_create("org.tessaro.reachability", DISPATCH_QUEUE_SERIAL);
  return queue;
}

class SystemReachability final : public NetworkReachability {
 public:
  explicit SystemReachability(SCNetworkReachabilityRef owned)
      : target_(std::make_shared<const CFRef<SCNetworkReachabilityRef>>(owned)) {}
  ~SystemReachability() override { SystemReachability::Unwatch(); }

  [[nodiscard]] std::optional<ReachabilityFlags> Flags() const noexcept override {
    if (!MainQueue::IsMainThread()) return FlagsOf(target_);
    return WithDeadline<std::optional<ReachabilityFlags>>(lookUps_, kLongestWait,
                                                          [target = target_] { return FlagsOf(target); })
        .value_or(std::nullopt);
  }

  [[nodiscard]] bool Watch(std::shared_ptr<SerialQueue> queue, Changed changed) noexcept override {
    SharedWatcher watcher = std::make_shared<const Watcher>(Watcher{std::move(queue), std::move(changed)});
    SCNetworkReachabilityContext context = {0, &watcher, RetainWatcher, ReleaseWatcher, nullptr};
    if (!SCNetworkReachabilitySetCallback(target_->get(), Announce, &context)) return false;
    if (SCNetworkReachabilitySetDispatchQueue(target_->get(), AnnouncementQueue())) return true;
    SCNetworkReachabilitySetCallback(target_->get(), nullptr, nullptr);
    return false;
  }

  void Unwatch() noexcept override {
    SCNetworkReachabilitySetDispatchQueue(target_->get(), nullptr);
    SCNetworkReachabilitySetCallback(target_->get(), nullptr, nullptr);
  }

 private:
  Target target_;
  mutable SerialQueue lookUps_;
};

std::unique_ptr<NetworkReachability> Make(SCNetworkReachabilityRef owned) {
  return owned != nullptr ? std::make_unique<SystemReachability>(owned) : nullptr;
}

}  // namespace

std::unique_ptr<NetworkReachability> NetworkReachability::WithName(const std::string& host) noexcept {
  return Make(SCNetworkReachabilityCreateWithName(kCFAllocatorDefault, host.c_str()));
}

std::unique_ptr<NetworkReachability> NetworkReachability::WithAddress(const IPAddress& address) noexcept {
  sockaddr_storage storage{};
  if (address.family == IPAddress::Family::V4) {
    auto& v4 = reinterpret_cast<sockaddr_in&>(storage);
    v4.sin_len = sizeof v4;
    v4.sin_family = AF_INET;
    std::memcpy(&v4.sin_addr, address.bytes.data(), sizeof v4.sin_addr);
  } else {
    auto& v6 = reinterpret_cast<sockaddr_in6&>(storage);
    v6.sin6_len = sizeof v6;
    v6.sin6_family = AF_INET6;
    std::memcpy(&v6.sin6_addr, address.bytes.data(), sizeof v6.sin6_addr);
  }
  return Make(SCNetworkReachabilityCreateWithAddress(kCFAllocatorDefault, reinterpret_cast<const sockaddr*>(&storage)));
}

}  // namespace tessaro::platform
