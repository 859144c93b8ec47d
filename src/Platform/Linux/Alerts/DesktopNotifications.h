#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Base/Result.h"
#include "Platform/Linux/Base/SessionBus.h"
#include "Platform/UserNotifications.h"

namespace tessaro::platform {

// The client of the desktop's notification server (org.freedesktop.Notifications), which numbers the alerts on its
// screen. Main thread only; nothing throws. No call waits for the server; the first may wait for the bus.
class DesktopNotifications final : private BusService {
 public:
  using Id = std::uint32_t;

  // Calls come on the main thread, possibly before the causing call returns.
  class Listener {
   public:
    // A server may be there now: with the bus, or in place of another server.
    virtual void ServerAppeared() = 0;
    // The server is gone with its alerts. Calls in flight still get their replies.
    virtual void ServerLost() = 0;
    // The bus is gone with the server. Calls in flight get no reply.
    virtual void BusLost() = 0;
    // The server is ready after IsReady() was false, or it failed.
    virtual void ServerReady(const Result<void>& result) = 0;

    virtual void AlertActivated(Id id, UserNotificationActivation activation, const std::string& reply) = 0;
    virtual void AlertClosed(Id id, bool byUser) = 0;

   protected:
    ~Listener() = default;
  };

  // The listener must outlive this.
  DesktopNotifications(UserNotifications::Application application, Listener& listener)
      : application_(std::move(application)), listener_(listener) {}
  ~DesktopNotifications() { LeaveBus(); }

  void Connect() noexcept { JoinBus(); }
  [[nodiscard]] bool IsConnected() const noexcept { return server_ != nullptr; }

  // The running server's OwnerIdentity(); empty while none runs.
  [[nodiscard]] const std::string& Identity() const noexcept { return identity_; }

  // Whether Show() can be called. Otherwise starts the server and calls ServerReady(); without a bus at once.
  [[nodiscard]] bool IsReady() noexcept;

  // Shows an alert in place of the alert `id`, if that is not 0. `reply` gets the new id unless the call fails.
  [[nodiscard]] Result<void> Show(Id id, const UserNotification& alert,
                                  std::function<void(const Result<Id>&)> reply) noexcept;

  void Close(Id id) noexcept;

  [[nodiscard]] bool PlaysSounds() const { return capabilities_ && Has("sound"); }

 private:
  void Appear(sdbus::IConnection& bus) override;
  void Disappear() noexcept override;
  void AskCapabilities();
  void Received(sdbus::Message& message);
  void ServerChanged(bool isRunning);

  [[nodiscard]] bool Has(const char* capability) const { return capabilities_->contains(capability); }
  [[nodiscard]] std::vector<std::string> ActionsFor(const UserNotification& alert) const;
  [[nodiscard]] std::map<std::string, sdbus::Variant> HintsFor(const UserNotification& alert) const;

  const UserNotifications::Application application_;
  Listener& listener_;
  std::string identity_;
  std::optional<std::set<std::string>> capabilities_;  // nothing until the server has answered
  bool isAsking_ = false;
  std::unique_ptr<sdbus::IProxy> server_;
  sdbus::Slot signals_;
  sdbus::Slot owner_;
};

}  // namespace tessaro::platform
