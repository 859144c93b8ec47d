#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "Base/Result.h"

// Cocoa's scripting, which GNUstep lacks: what the application's scripting dictionary describes, by key-value coding
// from NSApp down. Main thread only; nothing throws.
namespace tessaro::platform::scripted {

// std::monostate is the missing value.
using Value = std::variant<std::monostate, bool, std::int64_t, std::string>;
using Element = std::vector<std::pair<std::string, Value>>;

[[nodiscard]] std::string ApplicationName();
// The bundle's, or empty.
[[nodiscard]] std::string ApplicationIdentifier();

[[nodiscard]] Value ApplicationProperty(const char* key);
[[nodiscard]] Result<void> SetApplicationProperty(const char* key, const Value& value);

[[nodiscard]] std::vector<std::int64_t> MessageIds();
[[nodiscard]] bool HasMessage(std::int64_t id);
// Nothing when there is no application.
[[nodiscard]] std::optional<std::int64_t> MakeMessage();
[[nodiscard]] Result<void> ComposeMessage(std::int64_t id);

[[nodiscard]] Value MessageProperty(std::int64_t id, const char* key);
[[nodiscard]] Result<void> SetMessageProperty(std::int64_t id, const char* key, const Value& value);

// Elements have texts only: "address" and "name" under the keys "toRecipients", "ccRecipients" and "bccRecipients",
// "path" under "mailAttachments", "name" and "content" under "messageSignature".
[[nodiscard]] Result<void> CheckElement(const char* key, const Element& element);

// The elements of a message. A property whose value is missing is left out.
[[nodiscard]] std::vector<Element> MessageElements(std::int64_t id, const char* key);
[[nodiscard]] Result<void> SetMessageElements(std::int64_t id, const char* key, const std::vector<Element>& elements);
[[nodiscard]] Result<void> AddMessageElement(std::int64_t id, const char* key, const Element& element);

// The one element of a message under a key.
[[nodiscard]] Element MessageElement(std::int64_t id, const char* key);
[[nodiscard]] Result<void> SetMessageElement(std::int64_t id, const char* key, const Element& element);

}  // namespace tessaro::platform::scripted
