#pragma once

#include <compare>
#include <string_view>

namespace tessaro::platform {

// The order of versions as the field has it. Runs of digits and runs of letters are compared one after the other,
// numbers by their value and words by their letters; a number is newer than a word. Of versions that are equal as far
// as both go the longer one is newer, unless it goes on with a word: 1.0b2 < 1.0 < 1.0.1 < 1.1.
[[nodiscard]] std::weak_ordering CompareVersions(std::string_view left, std::string_view right) noexcept;

}  // namespace tessaro::platform
