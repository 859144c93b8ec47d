#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tessaro::platform {

// GNUstep writes some characters of XML property lists as an escape of its own, \UXXXX, and reads it in any text.

// `text` in such a form that reading it gives `text`: what looks like an escape, but is none, is escaped. Lone
// surrogates and U+FFFE, which can't be kept, become U+FFFD. Nothing when it is that already.
[[nodiscard]] std::optional<std::u16string> EscapedForPropertyList(std::u16string_view text);

// The escapes of surrogates in a written property list, which reading would not put together again, as the characters
// they stand for.
[[nodiscard]] std::string WithSurrogatesJoined(std::string_view xml);

}  // namespace tessaro::platform
