#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tessaro::platform {

// The BCP 47 identifier for a POSIX locale name: "de-AT" for "de_AT.UTF-8@euro"; empty for "C" and "POSIX".
[[nodiscard]] std::string LanguageIdentifier(std::string_view locale);

// The user's languages as the environment gives them, first choice first; English when it gives none.
[[nodiscard]] std::vector<std::string> PreferredLanguagesOfEnvironment();

}  // namespace tessaro::platform
