#include "Platform/Linux/Alerts/DesktopNotifications.h"

#include <chrono>
#include <utility>

#include "Platform/Linux/Alerts/NotificationText.h"

namespace tessaro::platform {

namespace {

constexpr char kService[] = "org.freedesktop.Notifications";
constexpr char kPath[] = "/org/freedesktop/Notifications";
constexpr char kInterface[] = "org.freedesktop.Notifications";

// The keys of an alert's actions. Those of the standard are understood by servers, ours comes back as it is.
constexpr char kDefaultAction[] = "default";
constexpr char kInlineReplyAction[] = "inline-reply";
constexpr char kButtonAction[] = "button";

constexpr std::int32_t kServersOwnExpiry = -1;
// Servers that are started by being called may take their time.
constexpr std::chrono::seconds kDeadline{20};

std::string SentenceOf(const sdbus::Error& error) { return error.getName() + ": " + error.getMessage(); }

}  // namespace

DesktopNotifications::DesktopNotifications(std::string applicationName, Listener listener)
    : applicationName_(std::move(applicationName)), listener_(std::move(listener)) {}

void DesktopNotifications::Show(Alert alert, AlertContents contents) noexcept {
  if (!isListening_) {
    isListening_ = true;
    subscription_ = SessionBus::Shared().Listen({[this] { Follow(); }, [this] { Forget(); }});
  }
  Entry& entry = alerts_[alert];
  entry.contents = std::move(contents);
  entry.isNew = true;
  entry.wasLost = false;
  if (entry.state == State::Sent) {
    entry.isChanged = true;
  } else {
    entry.state = State::Waiting;
    SendWaiting();
  }
}

void DesktopNotifications::Withdraw(Alert alert) noexcept {
  const auto found = alerts_.find(alert);
  if (found == alerts_.end()) return;
  const std::uint32_t id = found->second.id;
  // One that is on its way is closed when the server says which it is.
  if (id != 0 && found->second.state != State::Sent) Close(id);
  alertsById_.erase(id);
  alerts_.erase(found);
}

void DesktopNotifications::Follow() {
  try {
    auto& bus = *SessionBus::Shared().Connection();
    signals_ = bus.addMatch(
        std::string("type='signal',sender='") + kService + "',path='" + kPath + "',interface='" + kInterface + "'",
        [this](sdbus::Message& message) { Received(message); });
    owners_ = bus.addMatch(
        std::string("type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='") + kService + "'",
        [this](sdbus::Message& message) {
          std::string name;
          std::string oldOwner;
          std::string newOwner;
          message >> name >> oldOwner >> newOwner;
          ServerChanged(!newOwner.empty());
        });
    server_ = sdbus::createProxy(bus, kService, kPath);
  } catch (const sdbus::Error&) {
    Forget();
  }
}

void DesktopNotifications::Forget() {
  // Answers come no more.
  for (auto& [alert, entry] : alerts_) {
    if (entry.state == State::Sent) entry.state = State::OnScreen;
  }
  LoseServer();
  isAsking_ = false;
  signals_.reset();
  owners_.reset();
  server_.reset();
}

void DesktopNotifications::AskCapabilities() {
  if (isAsking_) return;
  try {
    server_->callMethodAsync("GetCapabilities")
        .onInterface(kInterface)
        .withTimeout(kDeadline)
        .uponReplyInvoke([this](const sdbus::Error* error, const std::vector<std::string>& capabilities) {
          isAsking_ = false;
          if (error != nullptr) return FailWaiting(SentenceOf(*error));
          capabilities_.emplace(capabilities.begin(), capabilities.end());
          SendWaiting();
        });
    isAsking_ = true;
  } catch (const sdbus::Error& error) {
    FailWaiting(SentenceOf(error));
  }
}

void DesktopNotifications::SendWaiting() {
  if (!server_) return FailWaiting(SessionBus::Shared().LastError());
  if (!capabilities_) return AskCapabilities();
  // What can't be sent ends, and whoever hears of that may show or withdraw others.
  for (const Alert alert : AlertsIn(State::Waiting)) {
    const auto found = alerts_.find(alert);
    if (found != alerts_.end() && found->second.state == State::Waiting) Send(alert, found->second);
  }
}

void DesktopNotifications::Send(Alert alert, Entry& entry) {
  const AlertContents& contents = entry.contents;
  const bool readsMarkup = Has("body-markup");
  try {
    server_->callMethodAsync("Notify")
        .onInterface(kInterface)
        .withTimeout(kDeadline)
        .withArguments(applicationName_, entry.id, std::string(), DisplayableText(contents.title),
                       readsMarkup ? DisplayableMarkup(contents.text) : DisplayableText(contents.text),
                       ActionsFor(contents), HintsFor(contents), kServersOwnExpiry)
        .uponReplyInvoke([this, alert](const sdbus::Error* error, std::uint32_t id) { Answered(alert, error, id); });
    entry.state = State::Sent;
    entry.isChanged = false;
  } catch (const sdbus::Error& error) {
    Fail(alert, SentenceOf(error));
  }
}

std::vector<std::string> DesktopNotifications::ActionsFor(const AlertContents& contents) const {
  if (!Has("actions")) return {};
  // Where a click on the alert only closes it, as in Xfce, this is a button, which needs a title.
  std::vector<std::string> actions = {kDefaultAction, contents.defaultTitle};
  if (contents.reply) {
    actions.insert(actions.end(), {Has("inline-reply") ? kInlineReplyAction : kButtonAction, contents.reply->title});
  } else if (contents.actionTitle) {
    actions.insert(actions.end(), {kButtonAction, *contents.actionTitle});
  }
  return actions;
}

std::map<std::string, sdbus::Variant> DesktopNotifications::HintsFor(const AlertContents& contents) const {
  std::map<std::string, sdbus::Variant> hints;
  if (Has("sound") && !contents.soundFile.empty()) {
    hints.emplace("sound-file", contents.soundFile);
  } else {
    hints.emplace("suppress-sound", true);
  }
  if (contents.reply && Has("inline-reply")) {
    hints.emplace("x-kde-reply-placeholder-text", DisplayableText(contents.reply->placeholder));
  }
  return hints;
}

void DesktopNotifications::Answered(Alert alert, const sdbus::Error* error, std::uint32_t id) {
  const auto found = alerts_.find(alert);
  if (found == alerts_.end()) {
    if (error == nullptr) Close(id);
    return;
  }
  if (error != nullptr) return Fail(alert, SentenceOf(*error));
  Entry& entry = found->second;
  alertsById_.erase(entry.id);
  alertsById_[id] = alert;
  entry.id = id;
  entry.state = State::OnScreen;
  if (entry.isChanged) return Send(alert, entry);
  if (std::exchange(entry.isNew, false)) listener_.shown(alert, Has("sound"));
}

void DesktopNotifications::Close(std::uint32_t id) noexcept {
  if (!server_) return;
  try {
    server_->callMethod("CloseNotification").onInterface(kInterface).withArguments(id).dontExpectReply();
  } catch (const sdbus::Error&) {
    // The alert is gone with its server.
  }
}

void DesktopNotifications::Received(sdbus::Message& message) {
  const std::string signal = message.getMemberName();
  std::uint32_t id = 0;
  std::string text;
  try {
    message >> id;
    if (signal != "NotificationClosed") message >> text;
  } catch (const sdbus::Error&) {
    return;
  }
  const auto found = alertsById_.find(id);
  if (found == alertsById_.end()) return;
  const Alert alert = found->second;
  if (signal == "NotificationReplied") {
    End(alert, AlertEnd::Replied, text);
  } else if (signal == "ActionInvoked") {
    End(alert, text == kDefaultAction ? AlertEnd::ContentsClicked : AlertEnd::ActionClicked);
  } else if (signal == "NotificationClosed" && alerts_.at(alert).state == State::OnScreen) {
    // Otherwise it is what has just been replaced that was closed.
    End(alert, AlertEnd::Dismissed);
  }
}

void DesktopNotifications::ServerChanged(bool isThere) {
  LoseServer();
  if (isThere && !alerts_.empty()) AskCapabilities();
}

void DesktopNotifications::LoseServer() {
  capabilities_.reset();
  alertsById_.clear();
  for (const Alert alert : AlertsIn(State::OnScreen)) {
    const auto found = alerts_.find(alert);
    if (found == alerts_.end()) continue;
    Entry& entry = found->second;
    entry.id = 0;
    entry.state = State::Waiting;
    // An alert that a server can't bear would end the next one too.
    if (std::exchange(entry.wasLost, true)) End(alert, AlertEnd::Dismissed);
  }
}

void DesktopNotifications::FailWaiting(const std::string& reason) {
  for (const Alert alert : AlertsIn(State::Waiting)) Fail(alert, reason);
}

void DesktopNotifications::Fail(Alert alert, const std::string& reason) {
  const auto found = alerts_.find(alert);
  if (found != alerts_.end()) End(alert, found->second.isNew ? AlertEnd::NotShown : AlertEnd::Dismissed, reason);
}

void DesktopNotifications::End(Alert alert, AlertEnd end, const std::string& text) {
  // Some servers leave an alert on screen when it has been clicked.
  Withdraw(alert);
  listener_.ended(alert, end, text);
}

std::vector<DesktopNotifications::Alert> DesktopNotifications::AlertsIn(State state) const {
  std::vector<Alert> alerts;
  for (const auto& [alert, entry] : alerts_) {
    if (entry.state == state) alerts.push_back(alert);
  }
  return alerts;
}

}  // namespace tessaro::platform
