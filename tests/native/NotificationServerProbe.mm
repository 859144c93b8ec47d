#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Base/Ref.h"
#include "Base/TsString.h"
#include "Platform/Linux/Base/SessionBus.h"
#include "Probe.h"

namespace platform = tessaro::platform;

namespace {

using Hints = std::map<std::string, sdbus::Variant>;

constexpr char kName[] = "org.freedesktop.Notifications";
constexpr char kPath[] = "/org/freedesktop/Notifications";

// Other programs also send hints of other types.
NSDictionary* Described(const Hints& hints) {
  NSMutableDictionary* objects = [NSMutableDictionary dictionary];
  for (const auto& [key, value] : hints) {
    id object = nil;
    if (value.containsValueOfType<bool>()) object = Truth(value.get<bool>());
    if (value.containsValueOfType<std::string>()) object = TsNSString(value.get<std::string>());
    if (object != nil) [objects setObject:object forKey:TsNSString(key)];
  }
  return objects;
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
          @autoreleasepool {
            [calls addObject:@{
              @"method" : @"Notify",
              @"id" : @(id),
              @"replacesId" : @(replacesId),
              @"application" : TsNSString(application),
              @"summary" : TsNSString(summary),
              @"body" : TsNSString(body),
              @"actions" : List(actions, TsNSString),
              @"hints" : Described(hints)
            }];
          }
          answers_.emplace_back(id, std::move(result));
          if (answersAtOnce) Answer();
        });
    object_->registerMethod("CloseNotification").onInterface(kName).implementedAs([this](std::uint32_t id) {
      @autoreleasepool {
        [calls addObject:@{@"method" : @"CloseNotification", @"id" : @(id)}];
      }
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

  Ref<NSMutableArray> calls = Adopt([[NSMutableArray alloc] init]);
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

void serve(NSArray* names) {
  std::vector<std::string> capabilities;
  for (NSString* name in names) capabilities.push_back(TsStdString(name));
  TheServer() = std::make_unique<Server>(*platform::SessionBus::Shared().Connection(), std::move(capabilities));
}

id takeCalls() {
  NSArray* calls = [NSArray arrayWithArray:TheServer()->calls];
  [TheServer()->calls removeAllObjects];
  return calls;
}

void withhold() { TheServer()->answersAtOnce = false; }

void answer() {
  TheServer()->answersAtOnce = true;
  TheServer()->Answer();
}

void refuse(std::string reason) { TheServer()->refusal = reason; }

void invoke(std::uint32_t id, std::string action) { TheServer()->Emit("ActionInvoked", id, action); }

void reply(std::uint32_t id, std::string text) { TheServer()->Emit("NotificationReplied", id, text); }

void close(std::uint32_t id, std::uint32_t reason) { TheServer()->Emit("NotificationClosed", id, reason); }

// A signal with malformed arguments.
void babble(std::string text) { TheServer()->Emit("ActionInvoked", text); }

PROBES("notificationServer", serve, takeCalls, withhold, answer, refuse, invoke, reply, close, babble);

}  // namespace
