#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Base/Lifetime.h"
#include "Platform/Linux/Base/SessionBus.h"
#include "Probe.h"

namespace platform = tessaro::platform;

namespace {

constexpr std::chrono::minutes kDeadline{1};

// Not destroyed: at exit() the bus is gone.
template <int>
std::unique_ptr<sdbus::IProxy>& KeptProxy() {
  static Forever<std::unique_ptr<sdbus::IProxy>> proxy;
  return *proxy;
}

constexpr char kApplication[] = "org.tessaro.TessaroHost";
constexpr char kApplicationPath[] = "/org/tessaro/TessaroHost";

void ComposeAt(const sdbus::ObjectPath& path) {
  auto& message = KeptProxy<0>();
  message = sdbus::createProxy(*platform::SessionBus::Shared().Connection(), kApplication, path);
  message->callMethodAsync("Compose")
      .onInterface("org.tessaro.OutgoingMessage")
      .withTimeout(kDeadline)
      .uponReplyInvoke([](const sdbus::Error*) {});
}

sdbus::IProxy& Application() {
  auto& application = KeptProxy<1>();
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

PROBES("bench", prepareMessage, composeMessage);

}  // namespace
