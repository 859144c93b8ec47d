#include "Platform/ScriptingService.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <memory>
#include <span>
#include <string_view>
#include <utility>

#include "Base/Lifetime.h"
#include "Platform/Linux/Base/BusNames.h"
#include "Platform/Linux/Base/SessionBus.h"
#include "Platform/Linux/Scripting/ScriptedObjects.h"
#include "Platform/Linux/Scripting/ScriptingWire.h"

namespace tessaro::platform {

namespace {

using wire::Elements;
using wire::PropertyValue;

constexpr char kApplication[] = "org.tessaro.Application";
constexpr char kMessage[] = "org.tessaro.OutgoingMessage";
constexpr char kMessages[] = "/OutgoingMessages/";

constexpr char kFailed[] = "org.tessaro.Error.Failed";
constexpr char kBadLink[] = "org.tessaro.Error.BadLink";
constexpr char kNoSuchMessage[] = "org.tessaro.Error.NoSuchMessage";
constexpr char kInvalidArguments[] = "org.freedesktop.DBus.Error.InvalidArgs";

enum class Access { Read, ReadWrite };

// A name on the bus, and the key of Cocoa's scripting for it.
struct Property {
  const char* name;
  const char* key;
  const char* type;
  Access access = Access::ReadWrite;
};

constexpr char kText[] = "s";
constexpr char kTruth[] = "b";
constexpr char kNumber[] = "x";
constexpr char kElement[] = "a{sv}";
constexpr char kElements[] = "aa{sv}";

constexpr Property kApplicationProperties[] = {
    {"CurrentURL", "currentURL", kText, Access::Read},
    {"CurrentTitle", "currentTitle", kText, Access::Read},
    {"CurrentMessageText", "currentMessageText", kText, Access::Read},
    {"DoNotDisturb", "doNotDisturb", kTruth},
};

constexpr Property kMessageProperties[] = {
    {"Id", "id", kNumber, Access::Read},
    {"Sender", "sender", kText},
    {"Subject", "subject", kText},
    {"Content", "content", kText},
    {"DirectlySend", "directlySend", kTruth},
    {"OptimizeAttachments", "optimizeAttachments", kTruth},
    {"ImageAttachMethod", "imageAttachMethod", kText},
    {"ImageFileType", "imageFileType", kText},
    {"ImageSize", "imageSize", kText},
    {"ToRecipients", "toRecipients", kElements},
    {"CcRecipients", "ccRecipients", kElements},
    {"BccRecipients", "bccRecipients", kElements},
    {"MailAttachments", "mailAttachments", kElements},
    {"MessageSignature", "messageSignature", kElement},
    {"Visible", "visible", kTruth},
};

const Property& MessageProperty(const std::string& name) {
  const auto* found = std::find_if(std::begin(kMessageProperties), std::end(kMessageProperties),
                                   [&name](const Property& property) { return property.name == name; });
  if (found == std::end(kMessageProperties)) throw sdbus::Error(kInvalidArguments, "There is no property " + name);
  return *found;
}

void ThrowIfFailed(const Result<void>& result, const char* error = kFailed) {
  if (!result) throw sdbus::Error(error, result.error().message);
}

struct IsOfType {
  std::string_view type;

  // Only texts can be without a value.
  bool operator()(std::monostate) const { return type == kText; }
  bool operator()(bool) const { return type == kTruth; }
  bool operator()(std::int64_t) const { return type == kNumber; }
  bool operator()(const std::string&) const { return type == kText; }
  bool operator()(const wire::WireElement&) const { return type == kElement; }
  bool operator()(const Elements&) const { return type == kElements; }
};

void CheckElement(const char* key, const scripted::Element& element) {
  ThrowIfFailed(scripted::CheckElement(key, element), kInvalidArguments);
}

void Check(const Property& property, const PropertyValue& value) {
  if (property.access == Access::Read) {
    throw sdbus::Error(kInvalidArguments, std::string(property.name) + " can only be read");
  }
  if (!std::visit(IsOfType{property.type}, value)) {
    throw sdbus::Error(kInvalidArguments, std::string(property.name) + " is of the type " + property.type);
  }
  if (const auto* element = std::get_if<wire::WireElement>(&value)) CheckElement(property.key, element->properties);
  if (const auto* elements = std::get_if<Elements>(&value)) {
    for (const auto& element : *elements) CheckElement(property.key, element.properties);
  }
}

Result<void> Set(std::int64_t id, const Property& property, PropertyValue value) {
  if (const auto* element = std::get_if<wire::WireElement>(&value)) {
    return scripted::SetMessageElement(id, property.key, element->properties);
  }
  if (const auto* elements = std::get_if<Elements>(&value)) {
    return scripted::SetMessageElements(id, property.key, wire::Properties(*elements));
  }
  return scripted::SetMessageProperty(id, property.key, wire::Single(std::move(value)));
}

void SetMessageProperty(std::int64_t id, const Property& property, PropertyValue value) {
  Check(property, value);
  ThrowIfFailed(Set(id, property, std::move(value)));
}

void WriteMessageProperty(sdbus::Message& reply, std::int64_t id, const Property& property) {
  const std::string_view type = property.type;
  if (type == kElements) return wire::Write(reply, scripted::MessageElements(id, property.key));
  if (type == kElement) return wire::Write(reply, scripted::MessageElement(id, property.key));
  wire::Write(reply, type, scripted::MessageProperty(id, property.key));
}

void AddMessageElement(std::int64_t id, const char* key, const scripted::Element& element) {
  ThrowIfFailed(scripted::AddMessageElement(id, key, element));
}

std::string WellFormed(std::string name) {
  for (char& character : name) {
    if (!std::isalnum(static_cast<unsigned char>(character))) character = '_';
  }
  return name.empty() || std::isdigit(static_cast<unsigned char>(name.front())) ? "_" + name : name;
}

std::string BusName() {
  const std::string identifier = scripted::ApplicationIdentifier();
  return identifier.empty() ? "org.tessaro." + WellFormed(scripted::ApplicationName()) : identifier;
}

// "org.tessaro.Mail" is at "/org/tessaro/Mail", as applications are.
std::string PathOf(std::string name) {
  std::replace(name.begin(), name.end(), '.', '/');
  std::replace(name.begin(), name.end(), '-', '_');
  return "/" + name;
}

using Getter = std::function<void(sdbus::PropertyGetReply&)>;
using Setter = std::function<void(sdbus::PropertySetCall&)>;

void AddProperty(sdbus::IObject& object, const char* interface, const Property& property, Getter get, Setter set) {
  sdbus::Flags flags;
  flags.set(sdbus::Flags::EMITS_NO_SIGNAL);
  if (property.access == Access::Read) {
    object.registerProperty(interface, property.name, property.type, std::move(get), flags);
  } else {
    object.registerProperty(interface, property.name, property.type, std::move(get), std::move(set), flags);
  }
}

class ScriptingService {
 public:
  explicit ScriptingService(LinkHandler openLink)
      : openLink_(std::move(openLink)),
        name_(BusName()),
        path_(PathOf(name_)),
        subscription_(SessionBus::Shared().Listen({[this] { Appear(); }, [this] { Disappear(); }})) {}

  [[nodiscard]] std::string Name() const { return application_ ? name_ : std::string(); }

 private:
  void Appear() noexcept;
  void Disappear() noexcept;
  void RegisterApplication();
  [[nodiscard]] std::unique_ptr<sdbus::IObject> NewMessageObject(std::int64_t id) const;
  // Puts the message on the bus when its path is asked for.
  [[nodiscard]] sdbus::ObjectPath MessagePath(std::int64_t id);
  [[nodiscard]] sdbus::ObjectPath Make(const wire::NamedValues& properties);
  [[nodiscard]] sdbus::ObjectPath LookUp(std::int64_t id);

  LinkHandler openLink_;
  std::string name_;
  std::string path_;
  std::unique_ptr<sdbus::IObject> application_;
  std::map<std::int64_t, std::unique_ptr<sdbus::IObject>> messages_;
  // Calls back while it is made.
  SessionBus::Subscription subscription_;
};

void ScriptingService::Appear() noexcept {
  auto& bus = *SessionBus::Shared().Connection();
  try {
    application_ = sdbus::createObject(bus, path_);
    RegisterApplication();
    TakeName(bus, name_);
  } catch (const sdbus::Error&) {
    // Another process of the application owns the name: scripts talk to that one.
    Disappear();
  }
}

void ScriptingService::Disappear() noexcept {
  messages_.clear();
  application_.reset();
}

void ScriptingService::RegisterApplication() {
  for (const Property& property : kApplicationProperties) {
    AddProperty(
        *application_, kApplication, property,
        [&property](sdbus::PropertyGetReply& reply) {
          wire::Write(reply, property.type, scripted::ApplicationProperty(property.key));
        },
        [&property](sdbus::PropertySetCall& call) {
          ThrowIfFailed(scripted::SetApplicationProperty(property.key, wire::Single(wire::Read(call, property.type))));
        });
  }
  application_->registerProperty("OutgoingMessages")
      .onInterface(kApplication)
      .withGetter([this] {
        std::vector<sdbus::ObjectPath> paths;
        for (const std::int64_t id : scripted::MessageIds()) paths.push_back(MessagePath(id));
        return paths;
      })
      .withUpdateBehavior(sdbus::Flags::EMITS_NO_SIGNAL);
  application_->registerMethod("MakeOutgoingMessage")
      .onInterface(kApplication)
      .withInputParamNames("properties")
      .withOutputParamNames("message")
      .implementedAs([this](const wire::NamedValues& properties) { return Make(properties); });
  application_->registerMethod("OutgoingMessageWithUniqueID")
      .onInterface(kApplication)
      .withInputParamNames("id")
      .withOutputParamNames("message")
      .implementedAs([this](std::int64_t id) { return LookUp(id); });
  application_->registerMethod("OpenLink")
      .onInterface(kApplication)
      .withInputParamNames("link")
      .implementedAs([this](const std::string& link) { ThrowIfFailed(openLink_(link), kBadLink); });
  application_->finishRegistration();
}

void AddProperties(sdbus::IObject& object, std::int64_t id) {
  for (const Property& property : kMessageProperties) {
    AddProperty(
        object, kMessage, property,
        [id, &property](sdbus::PropertyGetReply& reply) { WriteMessageProperty(reply, id, property); },
        [id, &property](sdbus::PropertySetCall& call) {
          SetMessageProperty(id, property, wire::Read(call, property.type));
        });
  }
}

void AddMethods(sdbus::IObject& object, std::int64_t id) {
  for (const auto& [method, key] :
       {std::pair("AddToRecipient", "toRecipients"), std::pair("AddCcRecipient", "ccRecipients"),
        std::pair("AddBccRecipient", "bccRecipients")}) {
    object.registerMethod(method)
        .onInterface(kMessage)
        .withInputParamNames("address", "name")
        .implementedAs([id, key = key](const std::string& address, const std::string& name) {
          AddMessageElement(id, key, {{"address", address}, {"name", name}});
        });
  }
  object.registerMethod("AddMailAttachment")
      .onInterface(kMessage)
      .withInputParamNames("path")
      .implementedAs([id](const std::string& path) {
        AddMessageElement(id, "mailAttachments", {{"path", path}});
      });
  object.registerMethod("SetVisible")
      .onInterface(kMessage)
      .withInputParamNames("visible")
      .implementedAs([id](bool visible) { ThrowIfFailed(scripted::SetMessageProperty(id, "visible", visible)); });
  object.registerMethod("Compose").onInterface(kMessage).implementedAs(
      [id] { ThrowIfFailed(scripted::ComposeMessage(id)); });
}

std::unique_ptr<sdbus::IObject> ScriptingService::NewMessageObject(std::int64_t id) const {
  auto object = sdbus::createObject(*SessionBus::Shared().Connection(), path_ + kMessages + std::to_string(id));
  AddProperties(*object, id);
  AddMethods(*object, id);
  object->finishRegistration();
  return object;
}

sdbus::ObjectPath ScriptingService::MessagePath(std::int64_t id) {
  auto& object = messages_[id];
  if (!object) object = NewMessageObject(id);
  return object->getObjectPath();
}

sdbus::ObjectPath ScriptingService::Make(const wire::NamedValues& properties) {
  // Check everything before making the message: messages are never removed.
  for (const auto& [name, value] : properties.values) Check(MessageProperty(name), value);
  const auto id = scripted::MakeMessage();
  if (!id) throw sdbus::Error(kFailed, "There is no application to make messages for");
  for (const auto& [name, value] : properties.values) SetMessageProperty(*id, MessageProperty(name), value);
  return MessagePath(*id);
}

sdbus::ObjectPath ScriptingService::LookUp(std::int64_t id) {
  if (!scripted::HasMessage(id)) throw sdbus::Error(kNoSuchMessage, "There is no message " + std::to_string(id));
  return MessagePath(id);
}

std::unique_ptr<ScriptingService>& TheService() {
  static Forever<std::unique_ptr<ScriptingService>> service;
  return *service;
}

}  // namespace

void OfferScripting(LinkHandler openLink) {
  if (TheService() == nullptr) TheService() = std::make_unique<ScriptingService>(std::move(openLink));
}

std::string ScriptingName() { return TheService() != nullptr ? TheService()->Name() : std::string(); }

}  // namespace tessaro::platform
