#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Updater.h"

namespace tessaro::platform {

// The items of a feed in their order; nothing, with the reason, when the text is no feed. Any text may be given.
[[nodiscard]] std::optional<std::vector<AppcastItem>> ReadAppcast(std::string_view text, std::string& reason) noexcept;

// The property of that name, or the attribute of that name; nullptr where there is none.
[[nodiscard]] const AppcastProperty* FindProperty(const std::vector<AppcastProperty>& properties,
                                                  std::string_view name) noexcept;

// The text of what FindProperty() finds, or else nothing.
[[nodiscard]] std::string_view TextOfProperty(const std::vector<AppcastProperty>& properties,
                                              std::string_view name) noexcept;

}  // namespace tessaro::platform
