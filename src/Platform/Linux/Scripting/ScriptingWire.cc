#include "Platform/Linux/Scripting/ScriptingWire.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tessaro::platform::wire {

namespace {

using scripted::Element;
using scripted::Value;

constexpr char kInvalidArguments[] = "org.freedesktop.DBus.Error.InvalidArgs";

Element ElementFrom(const Dictionary& dictionary) {
  Element element;
  for (const auto& [name, variant] : dictionary) {
    const Value value = Read(variant);
    const auto* text = std::get_if<std::string>(&value);
    if (text == nullptr && !std::holds_alternative<std::monostate>(value)) {
      throw sdbus::Error(kInvalidArguments, name + " is of the type s");
    }
    element.emplace(name, text != nullptr ? std::optional(*text) : std::nullopt);
  }
  return element;
}

std::vector<Element> ElementsFrom(const std::vector<Dictionary>& dictionaries) {
  std::vector<Element> elements;
  for (const Dictionary& each : dictionaries) elements.push_back(ElementFrom(each));
  return elements;
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
T Get(sdbus::Message& message) {
  T value{};
  message >> value;
  return value;
}

template <typename T>
T Get(const sdbus::Variant& variant) {
  return variant.get<T>();
}

template <typename Source>
Value ReadFrom(Source& source, std::string_view type) {
  if (type == "s") return Get<std::string>(source);
  if (type == "b") return Get<bool>(source);
  if (type == "x") return Get<std::int64_t>(source);
  if (type == "a{sv}") return ElementFrom(Get<Dictionary>(source));
  if (type == "aa{sv}") return ElementsFrom(Get<std::vector<Dictionary>>(source));
  if (type != "av") throw sdbus::Error(kInvalidArguments, "No property is of the type " + std::string(type));
  if (Get<std::vector<sdbus::Variant>>(source).empty()) return {};
  throw sdbus::Error(kInvalidArguments, "An array of variants is a missing value, and empty");
}

template <typename T>
T ValueOrEmpty(const Value& value) {
  const T* held = std::get_if<T>(&value);
  return held != nullptr ? *held : T{};
}

}  // namespace

Value Read(sdbus::Message& message, std::string_view type) { return ReadFrom(message, type); }

Value Read(const sdbus::Variant& variant) { return ReadFrom(variant, variant.peekValueType()); }

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
