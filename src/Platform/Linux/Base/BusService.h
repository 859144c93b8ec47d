#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include "Base/Result.h"
#include "Platform/Linux/Base/SessionBus.h"

namespace tessaro::platform {

// Base of everything that has objects or proxies on the session bus: makes them whenever there is a bus, and lets go of
// them before the connection goes. Main thread only.
//
// The most derived class calls JoinBus(), at the end of its constructor or later, and LeaveBus() in its destructor.
class BusService {
 public:
  BusService(const BusService&) = delete;
  BusService& operator=(const BusService&) = delete;

 protected:
  BusService() = default;
  ~BusService() = default;

  // Appear() is called before this returns when there is a bus, and each time that the bus has come back. Joining twice
  // is allowed.
  void JoinBus() noexcept;

  // Calls Disappear().
  void LeaveBus() noexcept;

  // Makes objects and proxies. An sdbus::Error that this raises is followed by Disappear().
  virtual void Appear(sdbus::IConnection& bus) = 0;

  // Lets go of them. May be called twice.
  virtual void Disappear() noexcept = 0;

 private:
  bool hasJoined_ = false;
  SessionBus::Subscription subscription_;
};

// Runs calls that may raise sdbus::Error.
template <typename Work>
Result<void> TryOnBus(const Work& work) noexcept {
  try {
    work();
    return {};
  } catch (const sdbus::Error& error) {
    return Fail(error.getName() + ": " + error.getMessage());
  }
}

}  // namespace tessaro::platform
