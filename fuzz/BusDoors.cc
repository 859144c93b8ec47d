#include <fuzzer/FuzzedDataProvider.h>
#include <sdbus-c++/sdbus-c++.h>

#include <array>
#include <iterator>
#include <string>

#include "Doors.h"
#include "Platform/Linux/Scripting/ScriptingWire.h"

// A message without a bus. The library has this function, its headers do not.
namespace sdbus {
PlainMessage createPlainMessage();
}

namespace scripted = tessaro::platform::scripted;
namespace wire = tessaro::platform::wire;

namespace doors {

namespace {

struct Property {
  const char* key;
  const char* type;
};

constexpr std::array kProperties = {
    Property{"toRecipients", "aa{sv}"},
    Property{"mailAttachments", "aa{sv}"},
    Property{"messageSignature", "a{sv}"},
    Property{"subject", "s"},
    Property{"content", "s"},
    Property{"imageSize", "s"},
    Property{"optimizeAttachments", "b"},
};

constexpr std::array kTypes = {"s", "b", "x", "a{sv}", "aa{sv}", "av", "i", "d", "as"};
constexpr std::array kKeys = {"address", "name", "path", "content", "id"};

// A message that any program on the bus might send.
class Sender {
 public:
  explicit Sender(FuzzedDataProvider& input) : input_(input) {}

  void Append(sdbus::Message& message, std::string_view type, int depth = 0) {
    if (type == "s") message << Text();
    if (type == "b") message << input_.ConsumeBool();
    if (type == "x") message << input_.ConsumeIntegral<std::int64_t>();
    if (type == "i") message << input_.ConsumeIntegral<std::int32_t>();
    if (type == "d") message << input_.ConsumeFloatingPoint<double>();
    if (type == "a{sv}") AppendList(message, "{sv}", [&] { AppendEntry(message, depth); });
    if (type == "aa{sv}") AppendList(message, "a{sv}", [&] { Append(message, "a{sv}", depth); });
    if (type == "av") AppendList(message, "v", [&] { AppendVariant(message, depth); });
    if (type == "as") AppendList(message, "s", [&] { message << Text(); });
  }

 private:
  static constexpr int kDeepest = 6;

  std::string Text() {
    return input_.ConsumeBool() ? std::string(input_.PickValueInArray(kKeys)) : input_.ConsumeRandomLengthString(200);
  }

  template <typename AppendOne>
  void AppendList(sdbus::Message& message, const char* type, const AppendOne& appendOne) {
    message.openContainer(type);
    while (input_.remaining_bytes() > 0 && input_.ConsumeBool()) appendOne();
    message.closeContainer();
  }

  void AppendEntry(sdbus::Message& message, int depth) {
    message.openDictEntry("sv");
    message << Text();
    AppendVariant(message, depth);
    message.closeDictEntry();
  }

  void AppendVariant(sdbus::Message& message, int depth) {
    const char* type = depth < kDeepest ? input_.PickValueInArray(kTypes) : "s";
    message.openVariant(type);
    Append(message, type, depth + 1);
    message.closeVariant();
  }

  FuzzedDataProvider& input_;
};

void Set(std::int64_t id, const Property& property, wire::PropertyValue value) {
  auto reply = sdbus::createPlainMessage();
  if (auto* element = std::get_if<wire::WireElement>(&value)) {
    if (!scripted::CheckElement(property.key, element->properties)) return;
    static_cast<void>(scripted::SetMessageElement(id, property.key, element->properties));
    return wire::Write(reply, scripted::MessageElement(id, property.key));
  }
  if (auto* elements = std::get_if<wire::Elements>(&value)) {
    for (const auto& each : *elements) {
      if (!scripted::CheckElement(property.key, each.properties)) return;
    }
    Expect(scripted::SetMessageElements(id, property.key, wire::Properties(*elements)).has_value(),
           "a list can be set");
    return wire::Write(reply, scripted::MessageElements(id, property.key));
  }
  static_cast<void>(scripted::SetMessageProperty(id, property.key, wire::Single(std::move(value))));
  wire::Write(reply, property.type, scripted::MessageProperty(id, property.key));
}

void Receive(std::int64_t id, FuzzedDataProvider& input) {
  const Property property = input.PickValueInArray(kProperties);
  const bool isConstruction = input.ConsumeBool();
  auto message = sdbus::createPlainMessage();
  Sender(input).Append(message, isConstruction ? "a{sv}" : property.type);
  message.seal();
  message.rewind(true);
  if (!isConstruction) return Set(id, property, wire::Read(message, property.type));
  wire::NamedValues values;
  message >> values;
  for (auto& [name, value] : values.values) static_cast<void>(value.index());
}

}  // namespace

void Scripting(std::string_view bytes) {
  FuzzedDataProvider input(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  const auto id = MakeOnlyMessage();
  try {
    Receive(id, input);
  } catch (const sdbus::Error&) {
    // The sender's reply.
    return;
  }
  static_cast<void>(scripted::ComposeMessage(id));
}

}  // namespace doors
