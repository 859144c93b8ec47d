#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <functional>
#include <string>

namespace tessaro::platform {

// Whether a process on the session bus owns the name now. False without a bus.
[[nodiscard]] bool HasOwner(const std::string& name) noexcept;

// Identifies the name's owner: successive owners differ, on this bus and others. Empty for a name without an owner, and
// without a reply from the bus.
[[nodiscard]] std::string OwnerIdentity(sdbus::IConnection& bus, const std::string& name) noexcept;

// Takes a name for this process, or keeps it: parts of the application that are called by the same name share it.
// Raises sdbus::Error when another process has it.
void TakeName(sdbus::IConnection& bus, const std::string& name);

// Calls `changed` whenever the name gets another owner or loses the one it had, until the slot is destroyed. Raises
// sdbus::Error.
[[nodiscard]] sdbus::Slot WatchOwner(sdbus::IConnection& bus, const std::string& name,
                                     std::function<void(bool hasOwner)> changed);

}  // namespace tessaro::platform
