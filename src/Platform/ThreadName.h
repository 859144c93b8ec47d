#pragma once

#include <string_view>

namespace tessaro::platform {

// The name of the calling thread, "main" for the main thread. Valid until the thread asks again.
[[nodiscard]] std::string_view CurrentThreadName() noexcept;

}  // namespace tessaro::platform
