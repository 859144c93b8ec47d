#pragma once

#include <optional>

#include "Platform/NetworkReachability.h"

namespace tessaro::platform {

// The way that the kernel's routing takes to `address`, as a reachability word; 0 when there is none. Nothing when the
// kernel would not say. Any thread; takes some microseconds.
[[nodiscard]] std::optional<ReachabilityFlags> FlagsOfRouteTo(const IPAddress& address) noexcept;

}  // namespace tessaro::platform
