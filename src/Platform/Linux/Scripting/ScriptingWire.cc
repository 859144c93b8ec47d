#include "Platform/Linux/Scripting/ScriptingWire.h"

#include <iterator>

namespace tessaro::platform::wire {

namespace {

template <typename T>
T ReadAs(sdbus::Message& message) {
  T value{};
  message >> value;
  return value;
}

PropertyValue MissingValue(sdbus::Message& message) {
  message.enterContainer("v");
  if (!message.isEmpty() && !ReadAs<sdbus::Variant>(message).isEmpty()) {
    throw sdbus::Error("org.freedesktop.DBus.Error.InvalidArgs", "An array of variants is a missing value, and empty");
  }
  message.clearFlags();
  message.exitContainer();
  return {};
}

PropertyValue ReadVariant(sdbus::Message& message) {
  std::string type;
  std::string contents;
  message.peekType(type, contents);
  message.enterVariant(contents);
  PropertyValue value = Read(message, contents);
  message.exitVariant();
  return value;
}

// Calls `take(key, value)` for each entry of a dictionary. Does nothing at the end of an array of them.
template <typename Take>
sdbus::Message& ReadDictionary(sdbus::Message& message, const Take& take) {
  if (!message.enterContainer("{sv}")) return message;
  while (message.enterDictEntry("sv")) {
    auto key = ReadAs<std::string>(message);
    take(std::move(key), ReadVariant(message));
    message.exitDictEntry();
  }
  message.clearFlags();
  message.exitContainer();
  return message;
}

struct TextOf {
  std::string operator()(const std::string& text) const { return text; }
  std::string operator()(std::monostate) const { return {}; }
  std::string operator()(bool value) const { return value ? "true" : "false"; }
  std::string operator()(std::int64_t value) const { return std::to_string(value); }
};

struct NumberOf {
  std::int64_t operator()(const std::string&) const { return 0; }
  std::int64_t operator()(std::monostate) const { return 0; }
  std::int64_t operator()(bool value) const { return value ? 1 : 0; }
  std::int64_t operator()(std::int64_t value) const { return value; }
};

struct ToSingle {
  scripted::Value operator()(std::monostate) const { return {}; }
  scripted::Value operator()(bool value) const { return value; }
  scripted::Value operator()(std::int64_t value) const { return value; }
  scripted::Value operator()(std::string&& value) const { return std::move(value); }
  template <typename Nested>
  scripted::Value operator()(Nested&&) const {
    throw sdbus::Error("org.freedesktop.DBus.Error.InvalidArgs", "Elements have no elements");
  }
};

}  // namespace

sdbus::Message& operator>>(sdbus::Message& message, WireElement& element) {
  element.properties.clear();
  return ReadDictionary(message, [&element](std::string key, PropertyValue value) {
    element.properties.emplace_back(std::move(key), Single(std::move(value)));
  });
}

sdbus::Message& operator<<(sdbus::Message& message, const WireElement& element) {
  message.openContainer("{sv}");
  for (const auto& [key, value] : element.properties) {
    message.openDictEntry("sv");
    message << key;
    message.openVariant("s");
    message << std::visit(TextOf(), value);
    message.closeVariant();
    message.closeDictEntry();
  }
  message.closeContainer();
  return message;
}

sdbus::Message& operator>>(sdbus::Message& message, NamedValues& values) {
  return ReadDictionary(message, [&values](std::string key, PropertyValue value) {
    values.values.emplace_back(std::move(key), std::move(value));
  });
}

PropertyValue Read(sdbus::Message& message, std::string_view type) {
  if (type == "s") return ReadAs<std::string>(message);
  if (type == "b") return ReadAs<bool>(message);
  if (type == "x") return ReadAs<std::int64_t>(message);
  if (type == "a{sv}") return ReadAs<WireElement>(message);
  if (type == "aa{sv}") return ReadAs<Elements>(message);
  if (type == "av") return MissingValue(message);
  throw sdbus::Error("org.freedesktop.DBus.Error.InvalidArgs", "No property is of the type " + std::string(type));
}

void Write(sdbus::Message& message, std::string_view type, const scripted::Value& value) {
  if (type == "s") {
    message << std::visit(TextOf(), value);
  } else if (type == "b") {
    message << (std::visit(NumberOf(), value) != 0);
  } else {
    message << std::visit(NumberOf(), value);
  }
}

void Write(sdbus::Message& message, const std::vector<scripted::Element>& elements) {
  message.openContainer("a{sv}");
  for (const auto& element : elements) message << WireElement{element};
  message.closeContainer();
}

void Write(sdbus::Message& message, const scripted::Element& element) { message << WireElement{element}; }

scripted::Value Single(PropertyValue value) { return std::visit(ToSingle(), std::move(value)); }

std::vector<scripted::Element> Properties(const Elements& elements) {
  std::vector<scripted::Element> properties;
  properties.reserve(elements.size());
  for (const WireElement& element : elements) properties.push_back(element.properties);
  return properties;
}

}  // namespace tessaro::platform::wire
