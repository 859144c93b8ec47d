#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "Base/Lifetime.h"
#include "Platform/Linux/Base/SessionBus.h"
#include "Probe.h"

namespace platform = tessaro::platform;

namespace {

constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
constexpr char kPortalPath[] = "/org/freedesktop/portal/desktop";
constexpr char kSettings[] = "org.freedesktop.portal.Settings";
constexpr char kAppearance[] = "org.freedesktop.appearance";
constexpr std::chrono::minutes kDeadline{1};

void uniqueName(ProbeArguments args) {
  auto* bus = platform::SessionBus::Shared().Connection();
  args.GetReturnValue().Set(
      ScriptText(bus != nullptr ? bus->getUniqueName() : platform::SessionBus::Shared().LastError()));
}

std::optional<platform::SessionBus::Subscription>& Listening() {
  static std::optional<platform::SessionBus::Subscription> subscription;
  return subscription;
}

void Report(const std::shared_ptr<v8::Global<v8::Function>>& function, const char* event) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const v8::HandleScope handles(isolate);
  const auto local = function->Get(isolate);
  const auto context = local->GetCreationContext().ToLocalChecked();
  const v8::Context::Scope entered(context);
  v8::Local<v8::Value> argument = ScriptText(event);
  static_cast<void>(node::MakeCallback(isolate, context->Global(), local, 1, &argument, {0, 0}));
}

void listen(ProbeArguments args) {
  // A script function must be let go of before its engine ends.
  node::AddEnvironmentCleanupHook(
      args.GetIsolate(), [](void*) { Listening().reset(); }, nullptr);
  const auto function =
      std::make_shared<v8::Global<v8::Function>>(v8::Isolate::GetCurrent(), args[0].As<v8::Function>());
  Listening() = platform::SessionBus::Shared().Listen(
      {[function] { Report(function, "connected"); }, [function] { Report(function, "disconnected"); }});
}

void stopListening(ProbeArguments) { Listening().reset(); }

// A settings portal: no real one runs without a desktop, and Debian's knows no accent colour.
class Portal {
 public:
  using Settings = std::map<std::string, std::map<std::string, sdbus::Variant>>;

  explicit Portal(sdbus::IConnection& bus) : object_(sdbus::createObject(bus, kPortalPath)) {
    object_->registerMethod("ReadAll").onInterface(kSettings).implementedAs(
        [this](const std::vector<std::string>&) { return settings_; });
    object_->registerSignal("SettingChanged")
        .onInterface(kSettings)
        .withParameters<std::string, std::string, sdbus::Variant>();
    object_->finishRegistration();
    bus.requestName(kPortal);
  }

  void Set(const char* key, const sdbus::Variant& value) {
    settings_[kAppearance][key] = value;
    object_->emitSignal("SettingChanged")
        .onInterface(kSettings)
        .withArguments(std::string(kAppearance), std::string(key), value);
  }

 private:
  Settings settings_;
  std::unique_ptr<sdbus::IObject> object_;
};

Portal& SharedPortal() {
  static Forever<Portal> portal(*platform::SessionBus::Shared().Connection());
  return *portal;
}

void setPortalScheme(ProbeArguments args) {
  SharedPortal().Set("color-scheme", sdbus::Variant(static_cast<std::uint32_t>(Number(args[0]))));
}

// setPortalAccent(red, green, blue)
void setPortalAccent(ProbeArguments args) {
  using Components = sdbus::Struct<double, double, double>;
  SharedPortal().Set("accent-color", sdbus::Variant(Components(Number(args[0]), Number(args[1]), Number(args[2]))));
}

// Not destroyed: at exit() the bus is gone.
template <int>
std::unique_ptr<sdbus::IProxy>& KeptProxy() {
  static Forever<std::unique_ptr<sdbus::IProxy>> proxy;
  return *proxy;
}

// Asks the status item's menu as a tray does, over the bus: callMenu(method, row, function). The function is called
// when the answer has come, which is not read.
void callMenu(ProbeArguments args) {
  auto& menu = KeptProxy<0>();
  auto* bus = platform::SessionBus::Shared().Connection();
  if (!menu) menu = sdbus::createProxy(*bus, bus->getUniqueName(), "/StatusNotifierItem/Menu");
  const std::string method = StdText(args[0]);
  const std::int32_t row = static_cast<std::int32_t>(Number(args[1]));
  auto call = menu->createMethodCall("com.canonical.dbusmenu", method);
  call << row;
  if (method == "GetLayout") call << std::int32_t{-1} << std::vector<std::string>();
  if (method == "Event") call << "clicked" << sdbus::Variant(std::int32_t{0}) << std::uint32_t{0};
  const auto function =
      std::make_shared<v8::Global<v8::Function>>(v8::Isolate::GetCurrent(), args[2].As<v8::Function>());
  const auto answered = [function](sdbus::MethodReply&, const sdbus::Error* error) {
    Report(function, error == nullptr ? "answered" : "failed");
  };
  menu->callMethod(call, answered, kDeadline);
}

constexpr char kApplication[] = "org.tessaro.TessaroHost";
constexpr char kApplicationPath[] = "/org/tessaro/TessaroHost";

void ComposeAt(const sdbus::ObjectPath& path) {
  auto& message = KeptProxy<1>();
  message = sdbus::createProxy(*platform::SessionBus::Shared().Connection(), kApplication, path);
  message->callMethodAsync("Compose")
      .onInterface("org.tessaro.OutgoingMessage")
      .withTimeout(kDeadline)
      .uponReplyInvoke([](const sdbus::Error*) {});
}

sdbus::IProxy& Application() {
  auto& application = KeptProxy<2>();
  if (!application) {
    application = sdbus::createProxy(*platform::SessionBus::Shared().Connection(), kApplication, kApplicationPath);
  }
  return *application;
}

sdbus::MethodCall& PreparedMessage() {
  static Forever<sdbus::MethodCall> message;
  return *message;
}

// Composes a message as a script does, over the bus: prepareMessage(count), the number of recipients, and then
// composeMessage().
void prepareMessage(ProbeArguments args) {
  std::vector<std::map<std::string, sdbus::Variant>> recipients;
  const auto count = static_cast<int>(Number(args[0]));
  for (int index = 0; index < count; ++index) {
    const std::string name = "person" + std::to_string(index);
    recipients.push_back({{"address", name + "@example.org"}, {"name", name}});
  }
  const std::map<std::string, sdbus::Variant> properties{{"ToRecipients", sdbus::Variant(recipients)}};
  PreparedMessage() = Application().createMethodCall("org.tessaro.Application", "MakeOutgoingMessage");
  PreparedMessage() << properties;
}

void composeMessage(ProbeArguments) {
  const auto compose = [](sdbus::MethodReply& reply, const sdbus::Error* error) {
    sdbus::ObjectPath path;
    if (error != nullptr) return;
    reply >> path;
    ComposeAt(path);
  };
  Application().callMethod(PreparedMessage(), compose, kDeadline);
}

}  // namespace

void AttachBusProbe(v8::Local<v8::Object> exports) {
  PROBE(uniqueName);
  PROBE(listen);
  PROBE(stopListening);
  PROBE(setPortalScheme);
  PROBE(setPortalAccent);
  PROBE(callMenu);
  PROBE(prepareMessage);
  PROBE(composeMessage);
}
