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

#include "Platform/Linux/Base/SessionBus.h"

namespace tessaro::platform {

// What an alert shows: UTF-8, with whatever is in it. The server gets as much of it as it can take.
struct AlertContents {
  struct Reply {
    std::string title;
    std::string placeholder;
  };

  std::string title;
  std::string text;
  std::string soundFile;     // empty: silent
  std::string defaultTitle;  // of what a click on the alert does
  std::optional<std::string> actionTitle;
  std::optional<Reply> reply;  // takes the place of the action
};

enum class AlertEnd {
  ContentsClicked,
  ActionClicked,  // or a reply was asked for, where the server has no field for it
  Replied,
  Dismissed,  // by the person, by the server after a while, or with the server
  NotShown,
};

// The desktop's notification server.
//
// An alert that is shown ends once: as the person or the server ends it, or by Withdraw(), which tells nobody. When the
// server is started anew it is given the alerts again that its predecessor had on screen. Main thread only; nothing
// waits, nothing throws.
class DesktopNotifications {
 public:
  // Of the caller's choice, each used for one alert.
  using Alert = std::uint64_t;

  struct Listener {
    std::function<void(Alert, bool playsSound)> shown;
    // With the reply, or with the reason why nothing was shown.
    std::function<void(Alert, AlertEnd, const std::string& text)> ended;
  };

  DesktopNotifications(std::string applicationName, Listener listener);
  DesktopNotifications(const DesktopNotifications&) = delete;
  DesktopNotifications& operator=(const DesktopNotifications&) = delete;

  // Of an alert that is there already, the contents are replaced. Without a bus, the end is told before this returns.
  void Show(Alert alert, AlertContents contents) noexcept;

  void Withdraw(Alert alert) noexcept;

 private:
  enum class State { Waiting, Sent, OnScreen };

  struct Entry {
    AlertContents contents;
    State state = State::Waiting;
    std::uint32_t id = 0;    // the server's; 0 while it has none
    bool isNew = true;       // that it is shown has not been told
    bool isChanged = false;  // since it was sent
    bool wasLost = false;    // with an earlier server
  };

  void Follow();
  void Forget();
  void AskCapabilities();
  void SendWaiting();
  void Send(Alert alert, Entry& entry);
  void Answered(Alert alert, const sdbus::Error* error, std::uint32_t id);
  void Close(std::uint32_t id) noexcept;
  void Received(sdbus::Message& message);
  void ServerChanged(bool isThere);
  void LoseServer();
  void FailWaiting(const std::string& reason);
  void Fail(Alert alert, const std::string& reason);
  void End(Alert alert, AlertEnd end, const std::string& text = {});

  [[nodiscard]] std::vector<Alert> AlertsIn(State state) const;
  [[nodiscard]] bool Has(const char* capability) const { return capabilities_->contains(capability); }
  [[nodiscard]] std::vector<std::string> ActionsFor(const AlertContents& contents) const;
  [[nodiscard]] std::map<std::string, sdbus::Variant> HintsFor(const AlertContents& contents) const;

  const std::string applicationName_;
  const Listener listener_;
  std::map<Alert, Entry> alerts_;
  std::map<std::uint32_t, Alert> alertsById_;
  std::optional<std::set<std::string>> capabilities_;  // nothing while they aren't known
  bool isAsking_ = false;
  bool isListening_ = false;
  std::unique_ptr<sdbus::IProxy> server_;
  sdbus::Slot signals_;
  sdbus::Slot owners_;
  SessionBus::Subscription subscription_;
};

}  // namespace tessaro::platform
