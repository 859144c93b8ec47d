#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

// The part of Cocoa's scripting that GNUstep leaves out: what the scripting dictionary of the application has, reached
// by key-value coding from NSApp down. Main thread only; nothing throws.
namespace tessaro::platform::scripted {

// std::monostate is the missing value.
using Value = std::variant<std::monostate, bool, std::int64_t, std::string>;
using Element = std::vector<std::pair<std::string, Value>>;
// What went wrong, if anything did.
using Failure = std::optional<std::string>;

[[nodiscard]] std::string ApplicationName();
// The bundle's, or empty.
[[nodiscard]] std::string ApplicationIdentifier();

[[nodiscard]] Value ApplicationProperty(const char* key);
[[nodiscard]] Failure SetApplicationProperty(const char* key, const Value& value);

[[nodiscard]] std::vector<std::int64_t> MessageIds();
[[nodiscard]] bool HasMessage(std::int64_t id);
// Without a value when none could be made.
[[nodiscard]] std::optional<std::int64_t> MakeMessage();
[[nodiscard]] Failure ComposeMessage(std::int64_t id);

[[nodiscard]] Value MessageProperty(std::int64_t id, const char* key);
[[nodiscard]] Failure SetMessageProperty(std::int64_t id, const char* key, const Value& value);

// The elements of a message under one of the keys "toRecipients", "ccRecipients", "bccRecipients", "mailAttachments".
// A property whose value is missing is left out.
[[nodiscard]] std::vector<Element> MessageElements(std::int64_t id, const char* key);
[[nodiscard]] Failure SetMessageElements(std::int64_t id, const char* key, const std::vector<Element>& elements);
[[nodiscard]] Failure AddMessageElement(std::int64_t id, const char* key, const Element& element);

}  // namespace tessaro::platform::scripted
