#include <fuzzer/FuzzedDataProvider.h>
#include <sdbus-c++/sdbus-c++.h>

#include <array>
#include <iterator>
#include <string>

#include "Base/TsUnicode.h"
#include "Doors.h"
// The parser of kept alerts is private to the body.
#include "Platform/Linux/Alerts/DesktopNotifications.cc"
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

// As the service does for a property that is set.
void Set(std::int64_t id, const Property& property, const scripted::Value& value) {
  if (const auto* element = std::get_if<scripted::Element>(&value)) {
    if (!scripted::CheckElement(property.key, *element)) return;
  }
  if (const auto* elements = std::get_if<std::vector<scripted::Element>>(&value)) {
    for (const scripted::Element& each : *elements) {
      if (!scripted::CheckElement(property.key, each)) return;
    }
  }
  static_cast<void>(scripted::Set(id, property.key, value));
  auto reply = sdbus::createPlainMessage();
  wire::Write(reply, property.type, scripted::Get(id, property.key));
}

void Receive(std::int64_t id, FuzzedDataProvider& input) {
  const Property property = input.PickValueInArray(kProperties);
  const bool isConstruction = input.ConsumeBool();
  auto message = sdbus::createPlainMessage();
  Sender(input).Append(message, isConstruction ? "a{sv}" : property.type);
  message.seal();
  message.rewind(true);
  if (!isConstruction) return Set(id, property, wire::Read(message, property.type));
  static_cast<void>(wire::ReadDictionary(message));
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

void NotificationText(std::string_view bytes) {
  const auto isControl = [](char c) {
    return (static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t') || c == 0x7f;
  };
  const auto isUTF8 = [](std::string_view text) { return Utf16ToUtf8(Utf8ToUtf16(text)) == text; };
  const std::string text = tessaro::platform::DisplayableText(bytes);
  Expect(std::none_of(text.begin(), text.end(), isControl), "a displayable text has no control characters");
  Expect(text.size() <= 4003, "a displayable text is short");
  Expect(!isUTF8(bytes) || isUTF8(text), "characters stay whole");
  const std::string markup = tessaro::platform::DisplayableMarkup(bytes);
  Expect(markup.find_first_of("<>") == markup.npos, "markup has no elements");
}

}  // namespace doors
