#pragma once

#include <string>
#include <string_view>

namespace tessaro::platform {

// The UTF-8 text as notification servers can take it: without control characters but tabs and line feeds, and no
// longer than a desktop shows.
[[nodiscard]] std::string DisplayableText(std::string_view text);

// The same as markup that reads as this text.
[[nodiscard]] std::string DisplayableMarkup(std::string_view text);

}  // namespace tessaro::platform
