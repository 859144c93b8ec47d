#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Base/Result.h"

// Cocoa's scripting, which GNUstep lacks: what the application's scripting dictionary describes, by key-value coding
// from NSApp down. Main thread only; nothing throws.
namespace tessaro::platform::scripted {

// The texts of a recipient, an attachment or a signature by property.
using Element = std::map<std::string, std::optional<std::string>>;

// std::monostate is the missing value.
using Value = std::variant<std::monostate, bool, std::int64_t, std::string, Element, std::vector<Element>>;

// The outgoing message of an id, or else the application.
using Object = std::optional<std::int64_t>;

[[nodiscard]] std::string ApplicationName();
// The bundle's, or empty.
[[nodiscard]] std::string ApplicationIdentifier();

[[nodiscard]] std::vector<std::int64_t> MessageIds();
[[nodiscard]] bool HasMessage(std::int64_t id);
// Nothing when there is no application.
[[nodiscard]] std::optional<std::int64_t> MakeMessage();
[[nodiscard]] Result<void> ComposeMessage(std::int64_t id);

// Elements are read without their missing texts.
[[nodiscard]] Value Get(Object object, const char* key);
[[nodiscard]] Result<void> Set(Object object, const char* key, const Value& value);
[[nodiscard]] Result<void> AddElement(std::int64_t message, const char* key, const Element& element);

// Fails for a property that the elements under `key` lack in the scripting dictionary. Check everything that comes from
// a script: the objects have other properties, too.
[[nodiscard]] Result<void> CheckElement(const char* key, const Element& element);

}  // namespace tessaro::platform::scripted
