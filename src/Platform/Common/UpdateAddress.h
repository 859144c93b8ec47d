#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Updater.h"

namespace tessaro::platform {

// Whether feeds and files may come from this address: over TLS, or from this very machine.
[[nodiscard]] bool IsTrustworthyAddress(std::string_view url) noexcept;

// The address with the parameters appended to its query, in order.
[[nodiscard]] std::string WithParameters(std::string_view url, const std::vector<FeedParameter>& parameters);

}  // namespace tessaro::platform
