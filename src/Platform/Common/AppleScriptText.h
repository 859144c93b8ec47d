#pragma once

#include <string>
#include <string_view>

namespace tessaro::platform {

// A text as AppleScript writes it, in quotes: whatever it contains, it does not end before its end.
[[nodiscard]] std::string AppleScriptText(std::string_view text);

// Opens the Finder's information window of a file; gives up after two seconds.
[[nodiscard]] std::string InformationWindowScript(std::string_view path);

}  // namespace tessaro::platform
