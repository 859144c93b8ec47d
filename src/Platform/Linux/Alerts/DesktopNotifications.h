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

#include "Platform/Linux/Base/BusService.h"
#include "Platform/UserNotifications.h"

namespace tessaro::platform {

// The texts of an alert: any UTF-8. The server gets as much as it can display.
struct AlertContents {
  struct Reply {
    std::string title;
    std::string placeholder;
  };

  std::string title;
  std::string text;
  std::string soundFile;     // empty: silent
  std::string defaultTitle;  // of a click on the alert
  std::optional<std::string> actionTitle;
  std::optional<Reply> reply;  // takes the place of the action
};

// An alert on the screen of one notification server.
struct ServerAlert {
  std::string server;  // its OwnerIdentity()
  std::uint32_t id = 0;
};

// The client of the desktop's notification server (org.freedesktop.Notifications).
//
// An alert ends once: by the user, by the server, or by Withdraw(), which calls no listener. A restarted server gets
// the alerts again that its predecessor had on screen. Main thread only; nothing throws. No call waits for the server;
// the first may wait for the bus.
class DesktopNotifications final : private BusService {
 public:
  using Key = UserNotifications::Key;

  struct Listener {
    // The server has the alert, under an id that may change. `isNew`: for the first time.
    std::function<void(const Key&, const ServerAlert&, bool isNew)> shown;
    std::function<void(const Key&, UserNotificationActivation, const std::string& reply)> activated;
    std::function<void(const Key&)> dismissed;                          // by the user
    std::function<void(const Key&)> gone;                               // expired, or lost with its server
    std::function<void(const Key&, const std::string& reason)> failed;  // never shown
    std::function<void()> serverChanged;                                // retry failed alerts now
  };

  DesktopNotifications(std::string applicationName, Listener listener);
  ~DesktopNotifications();

  // Replaces the contents of an existing alert. Without a bus, calls the listener's `failed` before returning.
  void Show(const Key& key, AlertContents contents) noexcept;

  // Adopts an alert that an earlier process has shown. Unless the same server runs, the alert is gone.
  void Follow(const Key& key, AlertContents contents, ServerAlert shown) noexcept;

  void Withdraw(const Key& key) noexcept;

  [[nodiscard]] bool PlaysSounds() const { return capabilities_ && Has("sound"); }

 private:
  enum class State { Waiting, Sent, OnScreen };

  struct Alert {
    AlertContents contents;
    State state = State::Waiting;
    std::uint32_t id = 0;     // the server's; 0 while it has none
    std::string server;       // of an earlier process, until the server is known
    bool isNew = true;        // `shown` is still to be called
    bool isChanged = false;   // since it was sent
    bool wasReshown = false;  // by a second server, after the first had gone
  };

  void Appear(sdbus::IConnection& bus) override;
  void Disappear() noexcept override;

  void CheckFollowed();
  void AskCapabilities();
  void SendWaiting();
  void Send(const Key& key, Alert& alert);
  void Answered(const Key& key, const sdbus::Error* error, std::uint32_t id);
  void Close(std::uint32_t id) noexcept;
  void Received(sdbus::Message& message);
  void Closed(const Key& key, std::uint32_t reason);
  void Activated(const Key& key, UserNotificationActivation activation, const std::string& reply = {});
  void ServerChanged(bool isRunning);
  void LoseServer();
  void FailWaiting(const std::string& reason);
  void Fail(const Key& key, const std::string& reason);

  [[nodiscard]] std::vector<Key> AlertsIn(State state) const;
  [[nodiscard]] bool Has(const char* capability) const { return capabilities_->contains(capability); }
  [[nodiscard]] std::vector<std::string> ActionsFor(const AlertContents& contents) const;
  [[nodiscard]] std::map<std::string, sdbus::Variant> HintsFor(const AlertContents& contents) const;

  const std::string applicationName_;
  const Listener listener_;
  std::map<Key, Alert> alerts_;
  std::map<std::uint32_t, Key> keysById_;
  std::string serverIdentity_;                         // empty while there is no server
  std::optional<std::set<std::string>> capabilities_;  // nothing until the server has answered
  bool isAsking_ = false;
  std::unique_ptr<sdbus::IProxy> server_;
  sdbus::Slot signals_;
  sdbus::Slot owner_;
};

}  // namespace tessaro::platform
