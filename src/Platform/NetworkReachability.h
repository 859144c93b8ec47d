#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/SerialQueue.h"

namespace tessaro::platform {

// What a reachability word is made of.
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

// A target, and whether this machine has a way to it. The way is all that is known: whether anybody is at the other
// end is not asked.
class NetworkReachability {
 public:
  using Changed = std::function<void(ReachabilityFlags flags)>;

  // nullptr when the system can't make the target. The address of all zeros stands for the internet.
  [[nodiscard]] static std::unique_ptr<NetworkReachability> WithName(const std::string& host) noexcept;
  [[nodiscard]] static std::unique_ptr<NetworkReachability> WithAddress(const IPAddress& address) noexcept;

  virtual ~NetworkReachability() = default;

  // As it is now; nothing when the system would not say. Any thread. On the main thread looking up a name may take
  // two seconds, elsewhere as long as the system's resolver likes.
  [[nodiscard]] virtual std::optional<ReachabilityFlags> Flags() const noexcept = 0;

  // Calls `changed` on `queue` whenever the flags have changed; changes that follow each other closely may be told as
  // one. False when the system can't tell of changes. Main thread only, and so is the destruction of a watched target.
  [[nodiscard]] virtual bool Watch(std::shared_ptr<SerialQueue> queue, Changed changed) noexcept = 0;
  virtual void Unwatch() noexcept = 0;
};

}  // namespace tessaro::platform
