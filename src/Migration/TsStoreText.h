#pragma once

#include <string>
#include <string_view>

// Texts as a store keeps them. For characters with a meaning in XML, or none that XML allows, the platform's framework
// writes "\u" and the two bytes of the UTF-16 unit, lowest first: "\u3c00" is "<".

[[nodiscard]] std::string TsTextFromStore(std::string_view stored);

// The form in which a store keeps `text`. XML's own escapes are the writer's business.
[[nodiscard]] std::string TsTextForStore(std::string_view text);
