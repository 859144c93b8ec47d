#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <chrono>

#include "Base/Result.h"
#include "Base/UvHandle.h"
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

  // Makes objects and proxies. An sdbus::Error that this raises is followed by Disappear(), and by another attempt when
  // the bus has missed a deadline.
  virtual void Appear(sdbus::IConnection& bus) = 0;

  // Lets go of them. May be called twice.
  virtual void Disappear() noexcept = 0;

 private:
  // Doubles with each attempt: a bus that hangs holds the main thread until its deadline.
  static constexpr std::chrono::milliseconds kFirstRetry{2000};

  void TryToAppear() noexcept;

  bool hasJoined_ = false;
  SessionBus::Subscription subscription_;
  UvHandle<uv_timer_t> retry_;
  std::chrono::milliseconds retryDelay_ = kFirstRetry;
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
