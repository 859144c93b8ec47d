#pragma once

#include <sdbus-c++/Types.h>

#include <map>
#include <string>

namespace tessaro::platform {

struct FileRequest;

// The options of the portal's OpenFile and SaveFile that correspond to `request`.
[[nodiscard]] std::map<std::string, sdbus::Variant> PortalOptions(const FileRequest& request, const std::string& token);

// The request's name for a new file without slashes and leading dots. A name without an extension of the first filter
// gets that filter's first.
[[nodiscard]] std::string SuggestedName(const FileRequest& request);

}  // namespace tessaro::platform
