#pragma once

#include <string>
#include <string_view>

// Texts as a store keeps them. Of characters that have a meaning in XML, or can't stand in it, the platform's framework
// writes "\u" and the two bytes of the UTF-16 unit, lowest first: "\u3c00" is "<".

// The text; `stored` itself when there is nothing to replace, or else a view of `buffer`.
[[nodiscard]] std::string_view TsTextFromStore(std::string_view stored, std::string& buffer);

// What a store can keep, and reads as `text`. XML's own escapes are the writer's business.
[[nodiscard]] std::string TsTextForStore(std::string_view text);
