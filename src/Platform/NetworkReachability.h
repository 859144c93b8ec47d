#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/TaskQueues.h"

namespace tessaro::platform {

// The bits of a reachability word.
using ReachabilityFlags = std::uint32_t;
inline constexpr ReachabilityFlags kTransientConnection = 1;
inline constexpr ReachabilityFlags kReachable = 2;
inline constexpr ReachabilityFlags kConnectionRequired = 4;
inline constexpr ReachabilityFlags kConnectionOnTraffic = 8;
inline constexpr ReachabilityFlags kInterventionRequired = 16;
inline constexpr ReachabilityFlags kConnectionOnDemand = 32;
inline constexpr ReachabilityFlags kIsLocalAddress = 0x10000;
inline constexpr ReachabilityFlags kIsDirect = 0x20000;

struct IPAddress {
  enum class Family { V4, V6 };

  Family family = Family::V4;
  std::array<std::uint8_t, 16> bytes{};  // in network order; an IPv4 address has the first four
};

// A target, and whether this machine has a route to it. Whether a server answers at the target is not tested.
class NetworkReachability {
 public:
  using Changed = std::function<void(ReachabilityFlags flags)>;

  // nullptr when the system can't make the target. The address of all zeros stands for the internet.
  [[nodiscard]] static std::unique_ptr<NetworkReachability> WithName(const std::string& host) noexcept;
  [[nodiscard]] static std::unique_ptr<NetworkReachability> WithAddress(const IPAddress& address) noexcept;

  virtual ~NetworkReachability() = default;

  // The current flags; nothing when they can't be read. Any thread. Looking up a name takes at most two seconds on the
  // main thread, and as long as the system's resolver elsewhere.
  [[nodiscard]] virtual std::optional<ReachabilityFlags> Flags() const noexcept = 0;

  // Calls `changed` on `queue` whenever the flags have changed; changes close together may be one call. False when the
  // system reports no changes. Main thread only; a watched target is destroyed there as well.
  [[nodiscard]] virtual bool Watch(std::shared_ptr<SerialQueue> queue, Changed changed) noexcept = 0;
  virtual void Unwatch() noexcept = 0;
};

}  // namespace tessaro::platform
