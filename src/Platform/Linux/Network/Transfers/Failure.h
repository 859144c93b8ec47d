#pragma once

#include <curl/curl.h>

#include <string_view>

#include "Base/Result.h"

namespace tessaro::platform {

// The full description of a failed transfer, in the form and with the error codes of Cocoa's URL loading, so that
// script reads one form on every system. `detail` is libcurl's own description, and may be empty.
[[nodiscard]] Failure DescribeFailure(CURLcode code, std::string_view url, std::string_view detail);

}  // namespace tessaro::platform
