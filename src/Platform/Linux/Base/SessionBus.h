#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <chrono>
#include <functional>
#include <future>
#include <list>
#include <memory>
#include <string>

#include "Base/Lifetime.h"
#include "Base/Result.h"
#include "Base/UvHandle.h"

namespace tessaro::platform {

// The process's connection to the session bus, driven by the main event loop, without a thread of its own.
//
// Main thread only; nothing throws. The first call makes the connection. When the bus goes away, listeners are called
// before the connection is destroyed, to release their proxies and objects; reconnecting is tried while there are
// listeners. A bus that accepts the connection and does not answer is waited for once, for some seconds, and then
// treated as missing. The connection does not keep the process alive.
class SessionBus {
 public:
  using Handler = std::function<void()>;

  struct Listener {
    Handler connected;     // make proxies and objects now
    Handler disconnected;  // let go of them now
  };

  // Ends the listening when the last copy is destroyed.
  using Subscription = std::shared_ptr<void>;

  static SessionBus& Shared();

  // nullptr when there is no bus to talk to; LastError() then says why.
  [[nodiscard]] sdbus::IConnection* Connection() noexcept;

  [[nodiscard]] const std::string& LastError() const noexcept { return lastError_; }

  // `connected` is called at once when there is a bus, and again each time it has come back.
  [[nodiscard]] Subscription Listen(Listener listener) noexcept;

  // Leaves the event loop for good.
  static constexpr EndStage kEnd = EndStage::Bus;
  void Close() noexcept;

 private:
  friend class Forever<SessionBus>;
  SessionBus() = default;
  ~SessionBus() = default;

  using Opening = std::future<std::unique_ptr<sdbus::IConnection>>;

  [[nodiscard]] static Opening Open();
  [[nodiscard]] bool Connect(std::chrono::milliseconds patience) noexcept;
  void Watch();
  void Disconnect() noexcept;
  void ScheduleReconnection() noexcept;
  void Process() noexcept;
  void Arm() noexcept;
  void Lose(const std::string& reason) noexcept;

  std::unique_ptr<sdbus::IConnection> connection_;
  Opening opening_;  // one that has outlasted our patience
  std::list<Listener> listeners_;
  std::string lastError_;
  std::chrono::milliseconds retryDelay_{};
  bool closed_ = false;
  UvHandle<uv_poll_t> poll_;
  UvHandle<uv_prepare_t> prepare_;
  UvHandle<uv_timer_t> timeout_;
  UvHandle<uv_timer_t> retry_;
};

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
