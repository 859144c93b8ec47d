#include "Platform/NetworkReachability.h"

#include <arpa/inet.h>
#include <netdb.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <utility>

#include "Platform/Common/Deadline.h"
#include "Platform/Linux/Network/NetworkChanges.h"
#include "Platform/Linux/Network/Routes.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

namespace {

constexpr std::chrono::seconds kLookUpDeadline{2};

// Reserved addresses: the route to them is the route to the internet, through whatever tables and rules.
constexpr IPAddress kAnywhereV4 = {IPAddress::Family::V4, {192, 0, 2, 1}};
constexpr IPAddress kAnywhereV6 = {IPAddress::Family::V6, {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}};

std::optional<ReachabilityFlags> FlagsOfInternet() {
  const auto v4 = FlagsOfRouteTo(kAnywhereV4);
  return v4.value_or(0) != 0 ? v4 : FlagsOfRouteTo(kAnywhereV6);
}

std::optional<IPAddress> ParseAddress(const std::string& text) {
  IPAddress address;
  if (inet_pton(AF_INET, text.c_str(), address.bytes.data()) == 1) return address;
  address.family = IPAddress::Family::V6;
  if (inet_pton(AF_INET6, text.c_str(), address.bytes.data()) == 1) return address;
  return std::nullopt;
}

IPAddress AddressOf(const addrinfo& found) {
  IPAddress address;
  if (found.ai_family == AF_INET) {
    const auto* v4 = reinterpret_cast<const sockaddr_in*>(found.ai_addr);
    std::copy_n(reinterpret_cast<const std::uint8_t*>(&v4->sin_addr), sizeof v4->sin_addr, address.bytes.begin());
  } else {
    const auto* v6 = reinterpret_cast<const sockaddr_in6*>(found.ai_addr);
    address.family = IPAddress::Family::V6;
    std::copy_n(v6->sin6_addr.s6_addr, address.bytes.size(), address.bytes.begin());
  }
  return address;
}

// The flags of the first address with a route.
std::optional<ReachabilityFlags> FlagsOfHost(const std::string& name) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(name.c_str(), nullptr, &hints, &found) != 0) return 0;
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, freeaddrinfo);
  std::optional<ReachabilityFlags> flags;
  for (; found != nullptr && flags.value_or(0) == 0; found = found->ai_next) {
    if (found->ai_family == AF_INET || found->ai_family == AF_INET6) flags = FlagsOfRouteTo(AddressOf(*found));
  }
  return flags;
}

// The state that a watch and the tasks on its queue share. Only the two atomics are used outside the queue.
struct Watching {
  std::shared_ptr<SerialQueue> queue;
  std::function<std::optional<ReachabilityFlags>()> read;
  NetworkReachability::Changed changed;
  std::optional<ReachabilityFlags> known;
  std::atomic<bool> isOver = false;
  std::atomic<bool> isPending = false;

  // On the queue.
  void Check() {
    isPending = false;
    const auto now = read();
    if (isOver || now == known) return;
    known = now;
    changed(now.value_or(0));
  }
};

// A target whose flags can be read by a function that outlives it.
class Target final : public NetworkReachability {
 public:
  enum class Speed { Quick, Slow };

  Target(Speed speed, std::function<std::optional<ReachabilityFlags>()> read) : speed_(speed), read_(std::move(read)) {}
  ~Target() override { Unwatch(); }

  [[nodiscard]] std::optional<ReachabilityFlags> Flags() const noexcept override {
    if (speed_ == Speed::Quick || !MainQueue::IsMainThread()) return read_();
    return WithDeadline(lookUps_, kLookUpDeadline, read_).value_or(std::nullopt);
  }

  [[nodiscard]] bool Watch(std::shared_ptr<SerialQueue> queue, Changed changed) noexcept override {
    Unwatch();
    auto watching = std::make_shared<Watching>();
    watching->queue = std::move(queue);
    watching->read = read_;
    watching->changed = std::move(changed);
    subscription_ = NetworkChanges::Shared().Listen([watching] {
      if (!watching->isPending.exchange(true)) watching->queue->Post([watching] { watching->Check(); });
    });
    if (!subscription_) return false;
    if (speed_ == Speed::Quick) {
      watching->known = read_();
    } else {
      watching->queue->Post([watching] { watching->known = watching->read(); });
    }
    watching_ = std::move(watching);
    return true;
  }

  void Unwatch() noexcept override {
    if (watching_) watching_->isOver = true;
    watching_.reset();
    subscription_ = {};
  }

 private:
  const Speed speed_;
  const std::function<std::optional<ReachabilityFlags>()> read_;
  mutable SerialQueue lookUps_;
  NetworkChanges::Subscription subscription_;
  std::shared_ptr<Watching> watching_;
};

}  // namespace

std::unique_ptr<NetworkReachability> NetworkReachability::WithName(const std::string& host) noexcept {
  if (host.empty() || host.find('\0') != std::string::npos) return nullptr;
  if (const auto address = ParseAddress(host)) return WithAddress(*address);
  return std::make_unique<Target>(Target::Speed::Slow, [host] { return FlagsOfHost(host); });
}

std::unique_ptr<NetworkReachability> NetworkReachability::WithAddress(const IPAddress& address) noexcept {
  const bool isInternet =
      std::all_of(address.bytes.begin(), address.bytes.end(), [](std::uint8_t byte) { return byte == 0; });
  if (isInternet) return std::make_unique<Target>(Target::Speed::Quick, FlagsOfInternet);
  return std::make_unique<Target>(Target::Speed::Quick, [address] { return FlagsOfRouteTo(address); });
}

}  // namespace tessaro::platform
