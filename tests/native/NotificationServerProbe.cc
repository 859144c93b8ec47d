#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Platform/Linux/Base/SessionBus.h"
#include "Probe.h"

namespace platform = tessaro::platform;

namespace {

using Hints = std::map<std::string, sdbus::Variant>;

constexpr char kName[] = "org.freedesktop.Notifications";
constexpr char kPath[] = "/org/freedesktop/Notifications";

v8::Local<v8::Value> ToScript(const std::string& text) { return ScriptText(text); }

v8::Local<v8::Value> ToScript(std::uint32_t number) {
  return v8::Integer::NewFromUnsigned(v8::Isolate::GetCurrent(), number);
}

v8::Local<v8::Value> ToScript(const std::vector<std::string>& texts) {
  std::vector<v8::Local<v8::Value>> values;
  for (const auto& text : texts) values.push_back(ToScript(text));
  return v8::Array::New(v8::Isolate::GetCurrent(), values.data(), values.size());
}

v8::Local<v8::Value> ToScript(const sdbus::Variant& value) {
  if (value.containsValueOfType<bool>()) return v8::Boolean::New(v8::Isolate::GetCurrent(), value.get<bool>());
  return ToScript(value.get<std::string>());
}

template <typename Value>
void Put(v8::Local<v8::Object> object, const std::string& key, const Value& value) {
  const auto context = v8::Isolate::GetCurrent()->GetCurrentContext();
  object->Set(context, ToScript(key), ToScript(value)).Check();
}

struct Call {
  std::string method;
  std::uint32_t id = 0;
  std::uint32_t replacesId = 0;
  std::string application;
  std::string summary;
  std::string body;
  std::vector<std::string> actions;
  Hints hints;
};

v8::Local<v8::Value> ToScript(const Call& call) {
  const auto object = v8::Object::New(v8::Isolate::GetCurrent());
  Put(object, "method", call.method);
  Put(object, "id", call.id);
  if (call.method != "Notify") return object;
  const auto hints = v8::Object::New(v8::Isolate::GetCurrent());
  for (const auto& [key, value] : call.hints) Put(hints, key, value);
  Put(object, "replacesId", call.replacesId);
  Put(object, "application", call.application);
  Put(object, "summary", call.summary);
  Put(object, "body", call.body);
  Put(object, "actions", call.actions);
  const auto context = v8::Isolate::GetCurrent()->GetCurrentContext();
  object->Set(context, ToScript(std::string("hints")), hints).Check();
  return object;
}

// A notification server that a test controls: Debian's have no reply fields, and always reply correctly and in time.
class Server {
 public:
  Server(sdbus::IConnection& bus, std::vector<std::string> capabilities)
      : capabilities_(std::move(capabilities)), object_(sdbus::createObject(bus, kPath)) {
    object_->registerMethod("GetCapabilities").onInterface(kName).implementedAs([this] { return capabilities_; });
    object_->registerMethod("GetServerInformation").onInterface(kName).implementedAs([] {
      return std::make_tuple(std::string("test"), std::string("test"), std::string("1"), std::string("1.2"));
    });
    object_->registerMethod("Notify").onInterface(kName).implementedAs(
        [this](sdbus::Result<std::uint32_t>&& result, const std::string& application, std::uint32_t replacesId,
               const std::string&, const std::string& summary, const std::string& body,
               const std::vector<std::string>& actions, const Hints& hints, std::int32_t) {
          const std::uint32_t id = replacesId != 0 ? replacesId : ++lastId_;
          calls.push_back({"Notify", id, replacesId, application, summary, body, actions, hints});
          answers_.emplace_back(id, std::move(result));
          if (answersAtOnce) Answer();
        });
    object_->registerMethod("CloseNotification").onInterface(kName).implementedAs([this](std::uint32_t id) {
      calls.push_back({.method = "CloseNotification", .id = id});
      Emit("NotificationClosed", id, std::uint32_t{3});
    });
    object_->registerSignal("NotificationClosed").onInterface(kName).withParameters<std::uint32_t, std::uint32_t>();
    object_->registerSignal("ActionInvoked").onInterface(kName).withParameters<std::uint32_t, std::string>();
    object_->registerSignal("NotificationReplied").onInterface(kName).withParameters<std::uint32_t, std::string>();
    object_->finishRegistration();
    bus.requestName(kName);
  }

  void Answer() {
    for (auto& [id, result] : std::exchange(answers_, {})) {
      if (refusal.empty()) {
        result.returnResults(id);
      } else {
        result.returnError(sdbus::Error("org.example.Refused", refusal));
      }
    }
  }

  template <typename... Values>
  void Emit(const char* signal, const Values&... values) {
    object_->emitSignal(signal).onInterface(kName).withArguments(values...);
  }

  std::vector<Call> calls;
  bool answersAtOnce = true;
  std::string refusal;

 private:
  std::vector<std::string> capabilities_;
  std::vector<std::pair<std::uint32_t, sdbus::Result<std::uint32_t>>> answers_;
  std::uint32_t lastId_ = 0;
  std::unique_ptr<sdbus::IObject> object_;
};

std::unique_ptr<Server>& TheServer() {
  static auto& server = *new std::unique_ptr<Server>();
  return server;
}

void serve(ProbeArguments args) {
  std::vector<std::string> capabilities;
  const auto context = args.GetIsolate()->GetCurrentContext();
  const auto list = args[0].As<v8::Array>();
  for (std::uint32_t i = 0; i < list->Length(); ++i) {
    capabilities.push_back(StdText(list->Get(context, i).ToLocalChecked()));
  }
  TheServer() = std::make_unique<Server>(*platform::SessionBus::Shared().Connection(), std::move(capabilities));
}

void takeCalls(ProbeArguments args) {
  std::vector<v8::Local<v8::Value>> calls;
  for (const Call& call : std::exchange(TheServer()->calls, {})) calls.push_back(ToScript(call));
  args.GetReturnValue().Set(v8::Array::New(args.GetIsolate(), calls.data(), calls.size()));
}

void withhold(ProbeArguments) { TheServer()->answersAtOnce = false; }

void answer(ProbeArguments) {
  TheServer()->answersAtOnce = true;
  TheServer()->Answer();
}

void refuse(ProbeArguments args) { TheServer()->refusal = StdText(args[0]); }

void invoke(ProbeArguments args) {
  TheServer()->Emit("ActionInvoked", static_cast<std::uint32_t>(Number(args[0])), StdText(args[1]));
}

void reply(ProbeArguments args) {
  TheServer()->Emit("NotificationReplied", static_cast<std::uint32_t>(Number(args[0])), StdText(args[1]));
}

void close(ProbeArguments args) {
  TheServer()->Emit("NotificationClosed", static_cast<std::uint32_t>(Number(args[0])),
                    static_cast<std::uint32_t>(Number(args[1])));
}

// A signal with malformed arguments.
void babble(ProbeArguments args) { TheServer()->Emit("ActionInvoked", StdText(args[0])); }

PROBES("notificationServer", serve, takeCalls, withhold, answer, refuse, invoke, reply, close, babble);

}  // namespace
