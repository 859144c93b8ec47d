#include "Platform/UserNotifications.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "Base/Lifetime.h"
#include "Platform/Linux/Alerts/AlertFiles.h"
#include "Platform/Linux/Alerts/DesktopNotifications.h"
#include "Platform/Linux/Base/WallClockTimer.h"
#include "Platform/SoundPlayer.h"
#include "Platform/StandardDirectories.h"

namespace tessaro::platform {

namespace {

UserNotifications::Moment Now() { return std::chrono::system_clock::now().time_since_epoch(); }

enum class State {
  Scheduled,  // until it is due
  Failed,     // due, until the server changes
  Waiting,    // for the server
  Sent,       // until the server replies
  OnScreen,
  Restored,  // on screen as long as the server of the earlier process runs
};

// `kept.due` stays until the server has the alert.
struct Alert {
  KeptAlert kept;
  State state = State::Scheduled;
  bool isNew = true;        // not delivered yet
  bool isChanged = false;   // since it was sent
  bool wasReshown = false;  // by a second server, after the first had gone

  // The server's; 0 without one.
  [[nodiscard]] DesktopNotifications::Id Id() const { return kept.shown ? kept.shown->id : 0; }
};

// Delivers through the desktop's notification server. The server has no schedule and does not remember an alert's
// application, so both are kept in files. A restarted server gets the alerts again that its predecessor had on screen.
class ServedNotifications final : public UserNotifications, private DesktopNotifications::Listener {
 public:
  static constexpr EndStage kEnd = EndStage::Services;

  void Start(Application application, UserNotifications::Listener listener) noexcept override {
    listener_ = std::move(listener);
    files_.emplace(LogDirectory(application.processName).parent_path() / "alerts");
    DesktopNotifications::Listener& receiver = *this;
    server_.emplace(std::move(application), receiver);
    Restore();
  }

  void Deliver(const Key& key, const UserNotification& notification) noexcept override {
    KeptAlert& kept = alerts_[key].kept;
    kept.key = key;
    kept.alert = notification;
    if (std::exchange(kept.due, std::nullopt)) SetTimer();
    Show(key);
  }

  void Schedule(const Key& key, const UserNotification& notification, Moment due) noexcept override {
    Withdraw(key);
    Alert& alert = alerts_[key];
    alert.kept = {key, notification, due, std::nullopt};
    const bool isKept = files_->Keep(alert.kept);
    SetTimer();
    if (!isKept) listener_.notKept(key, "it can't be kept beyond the end of this process");
  }

  void Withdraw(const Key& key) noexcept override {
    const auto found = alerts_.find(key);
    if (found == alerts_.end()) return;
    const Alert alert = std::move(found->second);
    alerts_.erase(found);
    files_->Remove(key);
    const bool isOnServer = keysById_.erase(alert.Id()) > 0;
    // The id of a sent alert arrives with the reply.
    if (isOnServer && alert.state != State::Sent) server_->Close(alert.Id());
    if (alert.kept.due) SetTimer();
  }

  void WithdrawDelivered() noexcept override {
    std::vector<Key> delivered;
    for (const auto& [key, alert] : alerts_) {
      if (!alert.kept.due) delivered.push_back(key);
    }
    for (const Key& key : delivered) Withdraw(key);
  }

  void Close() noexcept {
    timer_.Set(std::nullopt);
    alerts_.clear();
    server_.reset();
  }

 private:
  void Restore() {
    for (KeptAlert& kept : files_->All()) {
      const Key key = kept.key;
      const State state = kept.due ? State::Scheduled : State::Restored;
      alerts_[key] = {.kept = kept, .state = state, .isNew = state == State::Scheduled};
      listener_.restored(key, kept.alert, kept.due);
    }
    if (!AlertsIn(State::Restored).empty()) server_->Connect();
    CheckRestored();
    SetTimer();
  }

  // Without a bus, alerts of earlier processes count as on screen.
  void CheckRestored() {
    if (!server_->IsConnected()) return;
    for (const Key& key : AlertsIn(State::Restored)) {
      const auto found = alerts_.find(key);
      if (found == alerts_.end()) continue;
      Alert& alert = found->second;
      if (alert.kept.shown->server == server_->Identity()) {
        alert.state = State::OnScreen;
        keysById_[alert.Id()] = key;
      } else {
        Lose(key);
      }
    }
  }

  void Show(const Key& key) {
    if (!listener_.shouldPresent(key)) {
      Withdraw(key);
      return listener_.delivered(key);
    }
    const auto found = alerts_.find(key);
    if (found == alerts_.end() || !server_) return;
    Alert& alert = found->second;
    alert.isNew = true;
    alert.wasReshown = false;
    if (alert.state == State::Sent) {
      alert.isChanged = true;
      return;
    }
    alert.state = State::Waiting;
    server_->Connect();
    Send(key);
  }

  void SendWaiting() {
    for (const Key& key : AlertsIn(State::Waiting)) Send(key);
  }

  // A failure calls the listener, which may show or withdraw other alerts.
  void Send(const Key& key) {
    const auto found = alerts_.find(key);
    if (found == alerts_.end() || found->second.state != State::Waiting || !server_->IsReady()) return;
    Alert& alert = found->second;
    const auto sent = server_->Show(alert.Id(), alert.kept.alert,
                                    [this, key](const Result<DesktopNotifications::Id>& id) { Answered(key, id); });
    if (!sent) return Fail(key, sent.error().message);
    alert.state = State::Sent;
    alert.isChanged = false;
  }

  void Answered(const Key& key, const Result<DesktopNotifications::Id>& id) {
    const auto found = alerts_.find(key);
    if (found == alerts_.end()) {
      if (id) server_->Close(*id);
      return;
    }
    if (!id) return Fail(key, id.error().message);
    Alert& alert = found->second;
    keysById_.erase(alert.Id());
    keysById_[*id] = key;
    alert.kept.shown = {server_->Identity(), *id};
    alert.state = alert.isChanged ? State::Waiting : State::OnScreen;
    if (alert.isChanged) return Send(key);
    alert.kept.due.reset();
    // Without the file a later process does not know the alert, which is harmless.
    static_cast<void>(files_->Keep(alert.kept));
    if (std::exchange(alert.isNew, false)) Delivered(key, alert.kept.alert);
  }

  void Delivered(const Key& key, const UserNotification& notification) {
    if (notification.soundName && !server_->PlaysSounds()) {
      PlaySound(SoundFileNamed(*notification.soundName), nullptr);
    }
    listener_.delivered(key);
  }

  void Fail(const Key& key, const std::string& reason) {
    const auto found = alerts_.find(key);
    if (found == alerts_.end()) return;
    const bool isNew = found->second.isNew;
    if (found->second.kept.due) {
      found->second.state = State::Failed;
    } else {
      Withdraw(key);
    }
    if (isNew) return listener_.failed(key, reason);
    listener_.gone(key);
  }

  void DeliverDue() {
    std::vector<std::pair<Moment, Key>> due;
    for (const auto& [key, alert] : alerts_) {
      if (alert.state == State::Scheduled && *alert.kept.due <= Now()) due.emplace_back(*alert.kept.due, key);
    }
    std::sort(due.begin(), due.end());
    for (const auto& [moment, key] : due) {
      const auto found = alerts_.find(key);
      if (found != alerts_.end() && found->second.state == State::Scheduled) Show(key);
    }
    SetTimer();
  }

  void SetTimer() {
    std::optional<Moment> next;
    for (const auto& [key, alert] : alerts_) {
      if (alert.state != State::Scheduled || !alert.kept.due) continue;
      if (!next || *alert.kept.due < *next) next = alert.kept.due;
    }
    timer_.Set(server_ ? next : std::nullopt);
  }

  // ---- Of the server

  void ServerAppeared() override {
    CheckRestored();
    if (!server_->Identity().empty()) SendWaiting();
    for (auto& [key, alert] : alerts_) {
      if (alert.state == State::Failed) alert.state = State::Scheduled;
    }
    SetTimer();
  }

  void ServerLost() override {
    keysById_.clear();
    for (auto& [key, alert] : alerts_) {
      if (alert.state != State::Restored) alert.kept.shown.reset();
    }
    for (const Key& key : AlertsIn(State::OnScreen)) {
      const auto found = alerts_.find(key);
      if (found == alerts_.end()) continue;
      Alert& alert = found->second;
      alert.state = State::Waiting;
      // Show an alert again only once: it may be what crashed the server.
      if (std::exchange(alert.wasReshown, true)) Lose(key);
    }
  }

  void BusLost() override {
    for (auto& [key, alert] : alerts_) {
      if (alert.state == State::Sent) alert.state = State::OnScreen;
    }
    ServerLost();
  }

  void Lose(const Key& key) {
    Withdraw(key);
    listener_.gone(key);
  }

  void ServerReady(const Result<void>& result) override {
    if (result) return SendWaiting();
    for (const Key& key : AlertsIn(State::Waiting)) Fail(key, result.error().message);
  }

  void AlertActivated(DesktopNotifications::Id id, UserNotificationActivation activation,
                      const std::string& reply) override {
    const auto found = keysById_.find(id);
    if (found == keysById_.end()) return;
    const Key key = found->second;
    // Some servers leave an alert on screen when it has been clicked.
    Withdraw(key);
    listener_.activated(key, activation, reply);
  }

  void AlertClosed(DesktopNotifications::Id id, bool byUser) override {
    const auto found = keysById_.find(id);
    // A close signal while our replacement is in flight belongs to the old alert.
    if (found == keysById_.end() || alerts_.at(found->second).state != State::OnScreen) return;
    const Key key = found->second;
    Withdraw(key);
    (byUser ? listener_.dismissed : listener_.gone)(key);
  }

  [[nodiscard]] std::vector<Key> AlertsIn(State state) const {
    std::vector<Key> keys;
    for (const auto& [key, alert] : alerts_) {
      if (alert.state == state) keys.push_back(key);
    }
    return keys;
  }

  UserNotifications::Listener listener_;
  std::map<Key, Alert> alerts_;
  std::map<DesktopNotifications::Id, Key> keysById_;  // of alerts on the screen of the running server
  std::optional<AlertFiles> files_;
  WallClockTimer timer_{[this] { DeliverDue(); }};
  std::optional<DesktopNotifications> server_;
};

}  // namespace

UserNotifications& UserNotifications::Shared() {
  static Forever<ServedNotifications> notifications;
  return *notifications;
}

}  // namespace tessaro::platform
