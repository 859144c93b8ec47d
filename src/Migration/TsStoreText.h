#pragma once

#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

// Texts as a store keeps them. Of characters that have a meaning in XML, or can't stand in it, the platform's framework
// writes "\u" and the two bytes of the UTF-16 unit, lowest first: "\u3c00" is "<".

// The text; `stored` itself when there is nothing to replace, or else a view of `buffer`.
[[nodiscard]] std::string_view TsTextFromStore(std::string_view stored, std::string& buffer);

// What a store can keep, and reads as `text`. XML's own escapes are the writer's business.
[[nodiscard]] std::string TsTextForStore(std::string_view text);

// Nothing for a text that is no finite number.
template <typename Number>
[[nodiscard]] std::optional<Number> TsNumberInStore(std::string_view text) {
  Number number;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if constexpr (std::is_floating_point_v<Number>) {
    if (!std::isfinite(number)) return std::nullopt;
  }
  return number;
}

// Nothing for a text that is none.
[[nodiscard]] std::optional<bool> TsBooleanInStore(std::string_view text);
