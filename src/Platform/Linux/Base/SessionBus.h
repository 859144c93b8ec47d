#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <chrono>
#include <functional>
#include <future>
#include <list>
#include <memory>
#include <string>

#include "Base/Lifetime.h"
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

}  // namespace tessaro::platform
