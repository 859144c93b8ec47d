#include "Platform/Linux/Scripting/ScriptingWire.h"

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace tessaro::platform::wire {

namespace {

using scripted::Element;
using scripted::Value;

constexpr char kInvalidArguments[] = "org.freedesktop.DBus.Error.InvalidArgs";

using Dictionary = std::map<std::string, sdbus::Variant>;

template <typename T>
T ReadAs(sdbus::Message& message) {
  T value{};
  message >> value;
  return value;
}

Value ReadVariant(sdbus::Message& message) {
  std::string type;
  std::string contents;
  message.peekType(type, contents);
  message.enterVariant(contents);
  Value value = Read(message, contents);
  message.exitVariant();
  return value;
}

void Leave(sdbus::Message& message) {
  message.clearFlags();
  message.exitContainer();
}

// Calls `take` for each entry of a dictionary. False at the end of an array of dictionaries.
template <typename Take>
bool ReadEntries(sdbus::Message& message, const Take& take) {
  if (!message.enterContainer("{sv}")) return false;
  while (message.enterDictEntry("sv")) {
    auto name = ReadAs<std::string>(message);
    take(std::move(name), ReadVariant(message));
    message.exitDictEntry();
  }
  Leave(message);
  return true;
}

bool ReadElement(sdbus::Message& message, Element& element) {
  return ReadEntries(message, [&](std::string name, Value value) {
    auto* text = std::get_if<std::string>(&value);
    if (text == nullptr && !std::holds_alternative<std::monostate>(value)) {
      throw sdbus::Error(kInvalidArguments, name + " is of the type s");
    }
    element.emplace(std::move(name), text != nullptr ? std::optional(std::move(*text)) : std::nullopt);
  });
}

std::vector<Element> ReadElements(sdbus::Message& message) {
  std::vector<Element> elements;
  message.enterContainer("a{sv}");
  for (Element element; ReadElement(message, element); element.clear()) elements.push_back(std::move(element));
  Leave(message);
  return elements;
}

Value ReadMissing(sdbus::Message& message) {
  if (ReadAs<std::vector<sdbus::Variant>>(message).empty()) return {};
  throw sdbus::Error(kInvalidArguments, "An array of variants is a missing value, and empty");
}

Dictionary DictionaryFrom(const Element& element) {
  Dictionary dictionary;
  for (const auto& [name, text] : element) dictionary.emplace(name, text.value_or(""));
  return dictionary;
}

std::vector<Dictionary> DictionariesFrom(const std::vector<Element>& elements) {
  std::vector<Dictionary> dictionaries;
  for (const Element& each : elements) dictionaries.push_back(DictionaryFrom(each));
  return dictionaries;
}

template <typename T>
T ValueOrEmpty(const Value& value) {
  const T* held = std::get_if<T>(&value);
  return held != nullptr ? *held : T{};
}

}  // namespace

Value Read(sdbus::Message& message, std::string_view type) {
  if (type == "s") return ReadAs<std::string>(message);
  if (type == "b") return ReadAs<bool>(message);
  if (type == "x") return ReadAs<std::int64_t>(message);
  if (type == "aa{sv}") return ReadElements(message);
  if (type == "av") return ReadMissing(message);
  if (type != "a{sv}") throw sdbus::Error(kInvalidArguments, "No property is of the type " + std::string(type));
  Element element;
  ReadElement(message, element);
  return element;
}

NamedValues ReadDictionary(sdbus::Message& message) {
  NamedValues values;
  ReadEntries(message, [&](std::string name, Value value) { values.emplace_back(std::move(name), std::move(value)); });
  return values;
}

void Write(sdbus::Message& message, std::string_view type, const Value& value) {
  if (type == "s") {
    message << ValueOrEmpty<std::string>(value);
  } else if (type == "b") {
    message << (ValueOrEmpty<std::int64_t>(value) != 0);
  } else if (type == "x") {
    message << ValueOrEmpty<std::int64_t>(value);
  } else if (type == "a{sv}") {
    message << DictionaryFrom(ValueOrEmpty<Element>(value));
  } else {
    message << DictionariesFrom(ValueOrEmpty<std::vector<Element>>(value));
  }
}

}  // namespace tessaro::platform::wire
