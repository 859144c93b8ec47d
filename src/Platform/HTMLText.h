#pragma once

#include <string>
#include <string_view>

namespace tessaro::platform {

// What a person reads on a page of HTML: blocks, rows and line breaks on lines of their own, white space collapsed as a
// browser does, nothing of the head, scripts and styles, no line end at the end. The HTML is UTF-8 and may be broken in
// any way; it may be many megabytes. Any thread.
[[nodiscard]] std::string TextFromHTML(std::string_view html) noexcept;

}  // namespace tessaro::platform
