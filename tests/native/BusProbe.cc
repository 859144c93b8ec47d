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

void listen(ProbeArguments args) {
  // A script function must be let go of before its engine ends.
  node::AddEnvironmentCleanupHook(
      args.GetIsolate(), [](void*) { Listening().reset(); }, nullptr);
  const ScriptCallback report(args[0]);
  Listening() =
      platform::SessionBus::Shared().Listen({[report] { report("connected"); }, [report] { report("disconnected"); }});
}

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

// Asks the status item's menu as a tray does, over the bus: callMenu(method, row, function). The function is called
// when the answer has come, which is not read.
void callMenu(ProbeArguments args) {
  // Not destroyed: at exit() the bus is gone.
  static Forever<std::unique_ptr<sdbus::IProxy>> kept;
  auto& menu = *kept;
  auto* bus = platform::SessionBus::Shared().Connection();
  if (!menu) menu = sdbus::createProxy(*bus, bus->getUniqueName(), "/StatusNotifierItem/Menu");
  const std::string method = StdText(args[0]);
  const std::int32_t row = static_cast<std::int32_t>(Number(args[1]));
  auto call = menu->createMethodCall("com.canonical.dbusmenu", method);
  call << row;
  if (method == "GetLayout") call << std::int32_t{-1} << std::vector<std::string>();
  if (method == "Event") call << "clicked" << sdbus::Variant(std::int32_t{0}) << std::uint32_t{0};
  const auto answered = [report = ScriptCallback(args[2])](sdbus::MethodReply&, const sdbus::Error* error) {
    report(error == nullptr ? "answered" : "failed");
  };
  menu->callMethod(call, answered, kDeadline);
}

PROBES("bus", uniqueName, listen, setPortalScheme, setPortalAccent, callMenu);

}  // namespace
