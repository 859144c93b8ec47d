#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Platform/Linux/Scripting/ScriptedObjects.h"

// Scripting's values on the bus: texts (s), booleans (b), whole numbers (x), and elements, each a dictionary of its
// properties (a{sv}, and a list of them aa{sv}). An empty array of variants (av) is the missing value.
//
// Values are read from, and written to, the messages directly: sdbus::Variant would make a message of each value.
// Raises sdbus::Error for values of other types.
namespace tessaro::platform::wire {

struct WireElement {
  scripted::Element properties;
};

using Elements = std::vector<WireElement>;
using PropertyValue = std::variant<std::monostate, bool, std::int64_t, std::string, WireElement, Elements>;

struct NamedValues {
  std::vector<std::pair<std::string, PropertyValue>> values;
};

sdbus::Message& operator>>(sdbus::Message& message, WireElement& element);
sdbus::Message& operator<<(sdbus::Message& message, const WireElement& element);
sdbus::Message& operator>>(sdbus::Message& message, NamedValues& values);

[[nodiscard]] PropertyValue Read(sdbus::Message& message, std::string_view type);

// A missing value is written as an empty text, false or 0.
void Write(sdbus::Message& message, std::string_view type, const scripted::Value& value);
void Write(sdbus::Message& message, const std::vector<scripted::Element>& elements);
void Write(sdbus::Message& message, const scripted::Element& element);

// The value of anything but elements.
[[nodiscard]] scripted::Value Single(PropertyValue value);
[[nodiscard]] std::vector<scripted::Element> Properties(const Elements& elements);

}  // namespace tessaro::platform::wire

template <>
struct sdbus::signature_of<tessaro::platform::wire::WireElement> {
  static constexpr bool is_valid = true;
  static const std::string str() { return "a{sv}"; }
};

template <>
struct sdbus::signature_of<tessaro::platform::wire::NamedValues> {
  static constexpr bool is_valid = true;
  static const std::string str() { return "a{sv}"; }
};
