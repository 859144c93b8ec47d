#include "Platform/ScriptingService.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <memory>
#include <string_view>
#include <utility>

#include "Base/Lifetime.h"
#include "Platform/Linux/Base/SessionBus.h"
#include "Platform/Linux/Scripting/ScriptedObjects.h"
#include "Platform/Linux/Scripting/ScriptingWire.h"

namespace tessaro::platform {

namespace {

using scripted::Element;
using scripted::Value;

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

// The types of scripted::Value's alternatives; only texts can be missing.
constexpr std::array<std::string_view, 6> kTypes = {kText, kTruth, kNumber, kText, kElement, kElements};

void Check(const Property& property, const Value& value) {
  if (property.access == Access::Read) {
    throw sdbus::Error(kInvalidArguments, std::string(property.name) + " can only be read");
  }
  if (kTypes[value.index()] != property.type) {
    throw sdbus::Error(kInvalidArguments, std::string(property.name) + " is of the type " + property.type);
  }
  const auto check = [&](const Element& element) {
    ThrowIfFailed(scripted::CheckElement(property.key, element), kInvalidArguments);
  };
  if (const auto* element = std::get_if<Element>(&value)) check(*element);
  if (const auto* elements = std::get_if<std::vector<Element>>(&value)) {
    for (const Element& element : *elements) check(element);
  }
}

void Set(scripted::Object object, const Property& property, const Value& value) {
  Check(property, value);
  ThrowIfFailed(scripted::Set(object, property.key, value));
}

void AddElement(std::int64_t message, const char* key, const Element& element) {
  ThrowIfFailed(scripted::AddElement(message, key, element));
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

void AddProperty(sdbus::IObject& busObject, const char* interface, scripted::Object object, const Property& property) {
  const auto get = [object, &property](sdbus::PropertyGetReply& reply) {
    wire::Write(reply, property.type, scripted::Get(object, property.key));
  };
  const auto set = [object, &property](sdbus::PropertySetCall& call) {
    Set(object, property, wire::Read(call, property.type));
  };
  sdbus::Flags flags;
  flags.set(sdbus::Flags::EMITS_NO_SIGNAL);
  if (property.access == Access::Read) {
    busObject.registerProperty(interface, property.name, property.type, get, flags);
  } else {
    busObject.registerProperty(interface, property.name, property.type, get, set, flags);
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
          AddElement(id, key, {{"address", address}, {"name", name}});
        });
  }
  object.registerMethod("AddMailAttachment")
      .onInterface(kMessage)
      .withInputParamNames("path")
      .implementedAs([id](const std::string& path) {
        AddElement(id, "mailAttachments", {{"path", path}});
      });
  object.registerMethod("SetVisible")
      .onInterface(kMessage)
      .withInputParamNames("visible")
      .implementedAs([id](bool visible) { ThrowIfFailed(scripted::Set(id, "visible", visible)); });
  object.registerMethod("Compose").onInterface(kMessage).implementedAs(
      [id] { ThrowIfFailed(scripted::ComposeMessage(id)); });
}

class ScriptingService final : private BusService {
 public:
  explicit ScriptingService(LinkHandler openLink)
      : openLink_(std::move(openLink)), name_(BusName()), path_(PathOf(name_)) {
    JoinBus();
  }

 private:
  // Raises sdbus::Error when another process of the application has the name: scripts talk to that one.
  void Appear(sdbus::IConnection& bus) override {
    application_ = sdbus::createObject(bus, path_);
    RegisterApplication();
    TakeName(bus, name_);
  }

  void Disappear() noexcept override {
    messages_.clear();
    application_.reset();
  }

  void RegisterApplication() {
    for (const Property& property : kApplicationProperties) {
      AddProperty(*application_, kApplication, std::nullopt, property);
    }
    application_->registerProperty("OutgoingMessages")
        .onInterface(kApplication)
        .withGetter([this] {
          std::vector<sdbus::ObjectPath> paths;
          for (const std::int64_t id : scripted::MessageIds()) paths.push_back(MessagePath(id));
          return paths;
        })
        .withUpdateBehavior(sdbus::Flags::EMITS_NO_SIGNAL);
    application_->registerMethod(kApplication, "MakeOutgoingMessage", "a{sv}", {"properties"}, "o", {"message"},
                                 [this](sdbus::MethodCall call) {
                                   auto reply = call.createReply();
                                   reply << Make(wire::ReadDictionary(call));
                                   reply.send();
                                 });
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

  [[nodiscard]] std::unique_ptr<sdbus::IObject> NewMessageObject(std::int64_t id) const {
    auto object = sdbus::createObject(*SessionBus::Shared().Connection(), path_ + kMessages + std::to_string(id));
    for (const Property& property : kMessageProperties) AddProperty(*object, kMessage, id, property);
    AddMethods(*object, id);
    object->finishRegistration();
    return object;
  }

  // Puts the message on the bus when its path is asked for.
  [[nodiscard]] sdbus::ObjectPath MessagePath(std::int64_t id) {
    auto& object = messages_[id];
    if (!object) object = NewMessageObject(id);
    return object->getObjectPath();
  }

  [[nodiscard]] sdbus::ObjectPath Make(const wire::NamedValues& properties) {
    // Check everything before making the message: messages are never removed.
    for (const auto& [name, value] : properties) Check(MessageProperty(name), value);
    const auto id = scripted::MakeMessage();
    if (!id) throw sdbus::Error(kFailed, "There is no application to make messages for");
    for (const auto& [name, value] : properties) ThrowIfFailed(scripted::Set(id, MessageProperty(name).key, value));
    return MessagePath(*id);
  }

  [[nodiscard]] sdbus::ObjectPath LookUp(std::int64_t id) {
    if (!scripted::HasMessage(id)) throw sdbus::Error(kNoSuchMessage, "There is no message " + std::to_string(id));
    return MessagePath(id);
  }

  LinkHandler openLink_;
  std::string name_;
  std::string path_;
  std::unique_ptr<sdbus::IObject> application_;
  std::map<std::int64_t, std::unique_ptr<sdbus::IObject>> messages_;
};

std::unique_ptr<ScriptingService>& TheService() {
  static Forever<std::unique_ptr<ScriptingService>> service;
  return *service;
}

}  // namespace

void OfferScripting(LinkHandler openLink) {
  if (TheService() == nullptr) TheService() = std::make_unique<ScriptingService>(std::move(openLink));
}

}  // namespace tessaro::platform
