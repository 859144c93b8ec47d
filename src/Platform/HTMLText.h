#pragma once

#include <string>
#include <string_view>

namespace tessaro::platform {

// The visible text of an HTML page: one line for each block, row and line break, white space collapsed as in a browser,
// without head, scripts, styles and final line end. The HTML is UTF-8, may be malformed, and many megabytes long. Any
// thread.
[[nodiscard]] std::string TextFromHTML(std::string_view html) noexcept;

}  // namespace tessaro::platform
