#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <map>
#include <string>
#include <string_view>

#include "Platform/Linux/Scripting/ScriptedObjects.h"

// Scripting's values on the bus: texts (s), booleans (b), whole numbers (x), and elements, each a dictionary of its
// texts (a{sv}, and a list of them aa{sv}). An empty array of variants (av) is the missing value.
namespace tessaro::platform::wire {

using Dictionary = std::map<std::string, sdbus::Variant>;

// Raise sdbus::Error for values of other types.
[[nodiscard]] scripted::Value Read(sdbus::Message& message, std::string_view type);
[[nodiscard]] scripted::Value Read(const sdbus::Variant& variant);

// A value of another type than `type` is written as an empty text, false, 0 or no elements.
void Write(sdbus::Message& message, std::string_view type, const scripted::Value& value);

}  // namespace tessaro::platform::wire
