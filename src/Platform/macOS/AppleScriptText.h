#pragma once

#include <string>
#include <string_view>

namespace tessaro::platform {

// The text as a string literal of AppleScript, with quotes and backslashes escaped.
[[nodiscard]] std::string AppleScriptText(std::string_view text);

// Opens the Finder's information window of a file; gives up after two seconds.
[[nodiscard]] std::string InformationWindowScript(std::string_view path);

}  // namespace tessaro::platform
