#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tessaro::platform {

// GNUstep writes some characters of XML property lists as an escape of its own, \UXXXX, and reads it in any text.

// `text` with everything escaped that a reader would take for an escape. Lone surrogates and U+FFFE, which can't be
// kept, become U+FFFD. Nothing when `text` needs no change.
[[nodiscard]] std::optional<std::u16string> EscapedForPropertyList(std::u16string_view text);

// The written property list with the escapes of surrogate pairs, which a reader would not join, replaced by their
// characters.
[[nodiscard]] std::string WithSurrogatesJoined(std::string_view xml);

// Whether a property list, in any form, is well-formed as far as GNUstep's reader relies on it, and neither deeper nor
// larger than lists are. The reader goes where a binary list says, beyond its end and around in circles too, and
// exhausts the stack at deep ones. GNUstep's own serialization, which instantiates any class, is not sound.
[[nodiscard]] bool IsSoundPropertyList(std::string_view list) noexcept;

// Whether GNUstep's own serialization has strings and arrays of them only, and none beyond its end. NSDeserializer
// allocates whatever size it reads, and instantiates any class.
[[nodiscard]] bool IsSoundSerialization(std::string_view list) noexcept;

}  // namespace tessaro::platform
