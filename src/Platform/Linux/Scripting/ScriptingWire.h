#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Linux/Scripting/ScriptedObjects.h"

// Scripting's values on the bus: texts (s), booleans (b), whole numbers (x), and elements, each a dictionary of its
// texts (a{sv}, and a list of them aa{sv}). An empty array of variants (av) is the missing value.
namespace tessaro::platform::wire {

using NamedValues = std::vector<std::pair<std::string, scripted::Value>>;

// Reading raises sdbus::Error for values of other types. It takes the message apart itself: sdbus::Variant makes a
// message of each value, which takes ten times as long for many recipients.
[[nodiscard]] scripted::Value Read(sdbus::Message& message, std::string_view type);
[[nodiscard]] NamedValues ReadDictionary(sdbus::Message& message);

// A value of another type than `type` is written as an empty text, false, 0 or no elements.
void Write(sdbus::Message& message, std::string_view type, const scripted::Value& value);

}  // namespace tessaro::platform::wire
