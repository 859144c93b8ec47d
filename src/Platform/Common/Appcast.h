#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Base/Result.h"
#include "Platform/Updater.h"

namespace tessaro::platform {

// Which of several elements with the same name counts: enclosures for this system (as "sparkle:os" names it), texts in
// the first of these languages. Otherwise the first one that names no system or language.
struct AppcastPreferences {
  std::string system;
  std::vector<std::string> languages;
};

// The items of a feed in their order. Any text may be given; one that is no feed fails.
[[nodiscard]] Result<std::vector<AppcastItem>> ReadAppcast(std::string_view text,
                                                           const AppcastPreferences& preferences) noexcept;

// The first property of that name; nullptr if missing.
[[nodiscard]] const AppcastProperty* FindProperty(const std::vector<AppcastProperty>& properties,
                                                  std::string_view name) noexcept;

// The text of that property; empty if missing.
[[nodiscard]] std::string_view TextOfProperty(const std::vector<AppcastProperty>& properties,
                                              std::string_view name) noexcept;

}  // namespace tessaro::platform
