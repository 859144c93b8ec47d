#pragma once

#include <optional>

#include "Platform/NetworkReachability.h"

namespace tessaro::platform {

// The kernel's route to `address` as a reachability word; 0 without a route. Nothing when the kernel refuses to answer.
// Any thread; takes some microseconds.
[[nodiscard]] std::optional<ReachabilityFlags> FlagsOfRouteTo(const IPAddress& address) noexcept;

}  // namespace tessaro::platform
