#include "Platform/Linux/Base/BusNames.h"

#include <chrono>
#include <utility>

#include "Platform/Linux/Base/SessionBus.h"

namespace tessaro::platform {

namespace {

constexpr char kBus[] = "org.freedesktop.DBus";
constexpr char kBusPath[] = "/org/freedesktop/DBus";
constexpr std::chrono::milliseconds kDeadline{300};

}  // namespace

bool HasOwner(const std::string& name) noexcept {
  auto* bus = SessionBus::Shared().Connection();
  if (bus == nullptr) return false;
  bool hasOwner = false;
  try {
    sdbus::createProxy(*bus, kBus, kBusPath)
        ->callMethod("NameHasOwner")
        .onInterface(kBus)
        .withTimeout(kDeadline)
        .withArguments(name)
        .storeResultsTo(hasOwner);
  } catch (const sdbus::Error&) {
    return false;
  }
  return hasOwner;
}

void TakeName(sdbus::IConnection& bus, const std::string& name) {
  std::string owner;
  try {
    sdbus::createProxy(bus, kBus, kBusPath)
        ->callMethod("GetNameOwner")
        .onInterface(kBus)
        .withTimeout(kDeadline)
        .withArguments(name)
        .storeResultsTo(owner);
  } catch (const sdbus::Error&) {
    // Nobody has it.
  }
  if (owner != bus.getUniqueName()) bus.requestName(name);
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

sdbus::Slot WatchForOwner(sdbus::IConnection& bus, const std::string& name, std::function<void()> appeared) {
  return WatchOwner(bus, name, [appeared = std::move(appeared)](bool hasOwner) {
    if (hasOwner) appeared();
  });
}

}  // namespace tessaro::platform
