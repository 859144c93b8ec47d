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

std::string Joined(const std::optional<std::string>& subtitle, const std::optional<std::string>& text) {
  const std::string first = subtitle.value_or("");
  const std::string second = text.value_or("");
  return first.empty() || second.empty() ? first + second : first + "\n" + second;
}

std::string OrElse(const std::optional<std::string>& text, const std::string& other) {
  return text && !text->empty() ? *text : other;
}

// Delivers through the desktop's notification server. The server has no schedule and does not remember an alert's
// application, so both are kept in files.
class ServedNotifications final : public UserNotifications {
 public:
  static constexpr EndStage kEnd = EndStage::Services;

  void Start(Application application, Listener listener) noexcept override;
  void Deliver(const Key& key, const UserNotification& alert) noexcept override;
  void Schedule(const Key& key, const UserNotification& alert, Moment due) noexcept override;
  void Withdraw(const Key& key) noexcept override;
  void WithdrawDelivered() noexcept override;
  void Close() noexcept;

 private:
  enum class Progress { Scheduled, Sending, Failed };

  struct Entry {
    KeptAlert kept;
    Progress progress = Progress::Scheduled;
  };

  void Restore();
  void Show(const Key& key);
  void DeliverDue();
  void RetryDue();
  void SetTimer();
  void Shown(const Key& key, const ServerAlert& shown, bool isNew);
  void Failed(const Key& key, const std::string& reason);
  void Forget(const Key& key);
  [[nodiscard]] DesktopNotifications::Listener ServerListener();
  [[nodiscard]] AlertContents ContentsOf(const UserNotification& alert) const;

  Application application_;
  Listener listener_;
  std::map<Key, Entry> alerts_;
  std::optional<AlertFiles> files_;
  WallClockTimer timer_{[this] { DeliverDue(); }};
  std::optional<DesktopNotifications> server_;
};

void ServedNotifications::Start(Application application, Listener listener) noexcept {
  application_ = std::move(application);
  listener_ = std::move(listener);
  files_.emplace(LogDirectory(application_.processName).parent_path() / "alerts");
  server_.emplace(application_.name, ServerListener());
  Restore();
}

DesktopNotifications::Listener ServedNotifications::ServerListener() {
  return {
      .shown = [this](const Key& key, const ServerAlert& shown, bool isNew) { Shown(key, shown, isNew); },
      .activated =
          [this](const Key& key, UserNotificationActivation activation, const std::string& reply) {
            Forget(key);
            listener_.activated(key, activation, reply);
          },
      .dismissed =
          [this](const Key& key) {
            Forget(key);
            listener_.dismissed(key);
          },
      .gone =
          [this](const Key& key) {
            Forget(key);
            listener_.gone(key);
          },
      .failed = [this](const Key& key, const std::string& reason) { Failed(key, reason); },
      .serverChanged = [this] { RetryDue(); },
  };
}

void ServedNotifications::Restore() {
  for (KeptAlert& kept : files_->All()) {
    const Key key = kept.key;
    alerts_[key].kept = kept;
    listener_.restored(key, kept.alert, kept.due);
    if (kept.shown) server_->Follow(key, ContentsOf(kept.alert), *kept.shown);
  }
  SetTimer();
}

void ServedNotifications::Deliver(const Key& key, const UserNotification& alert) noexcept {
  KeptAlert& kept = alerts_[key].kept;
  kept.key = key;
  kept.alert = alert;
  if (std::exchange(kept.due, std::nullopt)) SetTimer();
  Show(key);
}

void ServedNotifications::Schedule(const Key& key, const UserNotification& alert, Moment due) noexcept {
  Withdraw(key);
  KeptAlert kept{key, alert, due, std::nullopt};
  const bool isKept = files_->Keep(kept);
  alerts_[key].kept = std::move(kept);
  SetTimer();
  if (!isKept) listener_.notKept(key, "it can't be kept beyond the end of this process");
}

void ServedNotifications::Withdraw(const Key& key) noexcept {
  if (server_) server_->Withdraw(key);
  Forget(key);
}

void ServedNotifications::WithdrawDelivered() noexcept {
  std::vector<Key> delivered;
  for (const auto& [key, entry] : alerts_) {
    if (!entry.kept.due) delivered.push_back(key);
  }
  for (const Key& key : delivered) Withdraw(key);
}

void ServedNotifications::Close() noexcept {
  timer_.Set(std::nullopt);
  server_.reset();
}

void ServedNotifications::Show(const Key& key) {
  if (listener_.shouldPresent(key)) {
    const auto found = alerts_.find(key);
    if (found != alerts_.end() && server_) server_->Show(key, ContentsOf(found->second.kept.alert));
  } else {
    Forget(key);
    listener_.delivered(key);
  }
}

AlertContents ServedNotifications::ContentsOf(const UserNotification& alert) const {
  AlertContents contents;
  contents.title = OrElse(alert.title, application_.name);
  contents.text = Joined(alert.subtitle, alert.text);
  if (alert.soundName) contents.soundFile = SoundFileNamed(*alert.soundName);
  contents.defaultTitle = application_.showTitle;
  if (alert.hasActionButton) contents.actionTitle = OrElse(alert.actionButtonTitle, application_.showTitle);
  if (alert.hasReplyField) contents.reply = {application_.replyTitle, alert.replyPlaceholder.value_or("")};
  return contents;
}

// An alert stays scheduled until the server has it.
void ServedNotifications::DeliverDue() {
  std::vector<std::pair<Moment, Key>> due;
  for (auto& [key, entry] : alerts_) {
    if (!entry.kept.due || *entry.kept.due > Now() || entry.progress != Progress::Scheduled) continue;
    entry.progress = Progress::Sending;
    due.emplace_back(*entry.kept.due, key);
  }
  std::sort(due.begin(), due.end());
  for (const auto& [moment, key] : due) {
    if (alerts_.contains(key)) Show(key);
  }
  SetTimer();
}

void ServedNotifications::RetryDue() {
  for (auto& [key, entry] : alerts_) {
    if (entry.progress == Progress::Failed) entry.progress = Progress::Scheduled;
  }
  SetTimer();
}

void ServedNotifications::SetTimer() {
  std::optional<Moment> next;
  for (const auto& [key, entry] : alerts_) {
    if (!entry.kept.due || entry.progress != Progress::Scheduled) continue;
    if (!next || *entry.kept.due < *next) next = entry.kept.due;
  }
  timer_.Set(next);
}

void ServedNotifications::Shown(const Key& key, const ServerAlert& shown, bool isNew) {
  const auto found = alerts_.find(key);
  if (found == alerts_.end()) return;
  KeptAlert& kept = found->second.kept;
  kept.due.reset();
  kept.shown = shown;
  // Without the file a later process does not know the alert, which is harmless.
  static_cast<void>(files_->Keep(kept));
  if (!isNew) return;
  if (kept.alert.soundName && !server_->PlaysSounds()) {
    SoundPlayer::Shared().Play(SoundFileNamed(*kept.alert.soundName), nullptr);
  }
  listener_.delivered(key);
}

void ServedNotifications::Failed(const Key& key, const std::string& reason) {
  const auto found = alerts_.find(key);
  if (found == alerts_.end()) return;
  if (found->second.kept.due) {
    found->second.progress = Progress::Failed;
  } else {
    Forget(key);
  }
  listener_.failed(key, reason);
}

void ServedNotifications::Forget(const Key& key) {
  const auto found = alerts_.find(key);
  if (found == alerts_.end()) return;
  const KeptAlert kept = std::move(found->second.kept);
  alerts_.erase(found);
  files_->Remove(kept.key);
  if (kept.due) SetTimer();
}

}  // namespace

UserNotifications& UserNotifications::Shared() {
  static Forever<ServedNotifications> notifications;
  return *notifications;
}

}  // namespace tessaro::platform
