#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <functional>
#include <string>

namespace tessaro::platform {

// Whether somebody on the session bus has that name now. False without a bus.
[[nodiscard]] bool HasOwner(const std::string& name) noexcept;

// Takes a name for this process, or keeps it: parts of the application that are called by the same name share it.
// Raises sdbus::Error when somebody else has it.
void TakeName(sdbus::IConnection& bus, const std::string& name);

// Calls `appeared` whenever somebody takes that name, until the slot is gone. Raises sdbus::Error.
[[nodiscard]] sdbus::Slot WatchForOwner(sdbus::IConnection& bus, const std::string& name,
                                        std::function<void()> appeared);

// Calls `changed` whenever the name gets another owner or loses the one it had, until the slot is destroyed. Raises
// sdbus::Error.
[[nodiscard]] sdbus::Slot WatchOwner(sdbus::IConnection& bus, const std::string& name,
                                     std::function<void(bool hasOwner)> changed);

}  // namespace tessaro::platform
