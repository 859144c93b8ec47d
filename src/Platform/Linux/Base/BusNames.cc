#include "Platform/Linux/Base/BusNames.h"

#include <chrono>
#include <utility>

#include "Platform/Linux/Base/BusService.h"
#include "Platform/Linux/Base/SessionBus.h"

namespace tessaro::platform {

namespace {

constexpr char kBus[] = "org.freedesktop.DBus";
constexpr char kBusPath[] = "/org/freedesktop/DBus";
constexpr std::chrono::milliseconds kDeadline{300};

// Asks the bus itself. Raises sdbus::Error.
template <typename Answer, typename... Arguments>
Answer AskBus(sdbus::IConnection& bus, const char* method, const Arguments&... arguments) {
  Answer answer{};
  sdbus::createProxy(bus, kBus, kBusPath)
      ->callMethod(method)
      .onInterface(kBus)
      .withTimeout(kDeadline)
      .withArguments(arguments...)
      .storeResultsTo(answer);
  return answer;
}

// Empty while the name has no owner.
std::string OwnerOf(sdbus::IConnection& bus, const std::string& name) noexcept {
  std::string owner;
  TryOnBus([&] { owner = AskBus<std::string>(bus, "GetNameOwner", name); });
  return owner;
}

}  // namespace

bool HasOwner(const std::string& name) noexcept {
  auto* bus = SessionBus::Shared().Connection();
  bool hasOwner = false;
  if (bus != nullptr) TryOnBus([&] { hasOwner = AskBus<bool>(*bus, "NameHasOwner", name); });
  return hasOwner;
}

std::string OwnerIdentity(sdbus::IConnection& bus, const std::string& name) noexcept {
  const std::string owner = OwnerOf(bus, name);
  std::string identity;
  // Buses number their connections from the beginning.
  if (!owner.empty()) TryOnBus([&] { identity = AskBus<std::string>(bus, "GetId") + owner; });
  return identity;
}

void TakeName(sdbus::IConnection& bus, const std::string& name) {
  if (OwnerOf(bus, name) != bus.getUniqueName()) bus.requestName(name);
}

sdbus::Slot WatchOwner(sdbus::IConnection& bus, const std::string& name, std::function<void(bool hasOwner)> changed) {
  const std::string rule = std::string("type='signal',sender='") + kBus + "',member='NameOwnerChanged',arg0='" + name;
  return bus.addMatch(rule + "'", [changed = std::move(changed)](sdbus::Message& message) {
    std::string changedName;
    std::string oldOwner;
    std::string newOwner;
    message >> changedName >> oldOwner >> newOwner;
    changed(!newOwner.empty());
  });
}

}  // namespace tessaro::platform
