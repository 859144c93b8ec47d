#include "Platform/Linux/Alerts/DesktopNotifications.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>

#include "Platform/Linux/Base/BusNames.h"

namespace tessaro::platform {

namespace {

constexpr char kService[] = "org.freedesktop.Notifications";
constexpr char kPath[] = "/org/freedesktop/Notifications";
constexpr char kInterface[] = "org.freedesktop.Notifications";

// The keys of an alert's actions. Servers define the first two, we define the third.
constexpr char kDefaultAction[] = "default";
constexpr char kInlineReplyAction[] = "inline-reply";
constexpr char kButtonAction[] = "button";

constexpr std::uint32_t kDismissedByUser = 2;
constexpr std::int32_t kServersOwnExpiry = -1;
// Long enough for a server that the bus starts on demand.
constexpr std::chrono::seconds kDeadline{20};

// ---- Texts

// Servers lay out the whole text before they cut it.
constexpr std::size_t kMostBytes = 4000;
constexpr char kEllipsis[] = "…";

bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

// The bus refuses NUL; the other control characters are not allowed in markup.
bool IsControl(char byte) {
  const auto code = static_cast<unsigned char>(byte);
  return (code < 0x20U && byte != '\n' && byte != '\t') || code == 0x7FU;
}

std::string Shortened(std::string_view text) {
  if (text.size() <= kMostBytes) return std::string(text);
  std::size_t end = kMostBytes;
  while (end > 0 && IsContinuation(text[end])) --end;
  return std::string(text.substr(0, end)) + kEllipsis;
}

// UTF-8 that notification servers accept.
std::string DisplayableText(std::string_view text) {
  std::string shown = Shortened(text);
  shown.erase(std::remove_if(shown.begin(), shown.end(), IsControl), shown.end());
  return shown;
}

// The same text, escaped as markup.
std::string DisplayableMarkup(std::string_view text) {
  std::string markup;
  for (const char c : DisplayableText(text)) {
    switch (c) {
      case '&':
        markup += "&amp;";
        break;
      case '<':
        markup += "&lt;";
        break;
      case '>':
        markup += "&gt;";
        break;
      default:
        markup += c;
    }
  }
  return markup;
}

std::string SentenceOf(const sdbus::Error& error) { return error.getName() + ": " + error.getMessage(); }

}  // namespace

DesktopNotifications::DesktopNotifications(std::string applicationName, Listener listener)
    : applicationName_(std::move(applicationName)), listener_(std::move(listener)) {}

DesktopNotifications::~DesktopNotifications() {
  alerts_.clear();
  LeaveBus();
}

void DesktopNotifications::Show(const Key& key, AlertContents contents) noexcept {
  Alert& alert = alerts_[key];
  alert.contents = std::move(contents);
  alert.isNew = true;
  alert.wasReshown = false;
  if (alert.state == State::Sent) {
    alert.isChanged = true;
    return;
  }
  alert.state = State::Waiting;
  JoinBus();
  SendWaiting();
}

void DesktopNotifications::Follow(const Key& key, AlertContents contents, ServerAlert shown) noexcept {
  alerts_[key] = {.contents = std::move(contents),
                  .state = State::OnScreen,
                  .id = shown.id,
                  .server = std::move(shown.server),
                  .isNew = false};
  JoinBus();
  CheckFollowed();
}

void DesktopNotifications::Withdraw(const Key& key) noexcept {
  const auto found = alerts_.find(key);
  if (found == alerts_.end()) return;
  const std::uint32_t id = found->second.id;
  // The id of a sent alert arrives with the reply.
  if (id != 0 && found->second.state != State::Sent) Close(id);
  keysById_.erase(id);
  alerts_.erase(found);
}

void DesktopNotifications::Appear(sdbus::IConnection& bus) {
  signals_ = bus.addMatch(
      std::string("type='signal',sender='") + kService + "',path='" + kPath + "',interface='" + kInterface + "'",
      [this](sdbus::Message& message) { Received(message); });
  owner_ = WatchOwner(bus, kService, [this](bool isRunning) { ServerChanged(isRunning); });
  server_ = sdbus::createProxy(bus, kService, kPath);
  serverIdentity_ = OwnerIdentity(bus, kService);
  CheckFollowed();
  if (!serverIdentity_.empty() && !AlertsIn(State::Waiting).empty()) AskCapabilities();
  listener_.serverChanged();
}

void DesktopNotifications::Disappear() noexcept {
  // No pending call gets its reply now.
  for (auto& [key, alert] : alerts_) {
    if (alert.state == State::Sent) alert.state = State::OnScreen;
  }
  LoseServer();
  isAsking_ = false;
  signals_.reset();
  owner_.reset();
  server_.reset();
}

// Without a bus, alerts of earlier processes count as on screen.
void DesktopNotifications::CheckFollowed() {
  if (!server_) return;
  for (const Key& key : AlertsIn(State::OnScreen)) {
    const auto found = alerts_.find(key);
    if (found == alerts_.end() || found->second.server.empty()) continue;
    if (std::exchange(found->second.server, {}) == serverIdentity_) {
      keysById_[found->second.id] = key;
    } else {
      alerts_.erase(found);
      listener_.gone(key);
    }
  }
}

void DesktopNotifications::AskCapabilities() {
  if (std::exchange(isAsking_, true)) return;
  const auto asked = TryOnBus([this] {
    server_->callMethodAsync("GetCapabilities")
        .onInterface(kInterface)
        .withTimeout(kDeadline)
        .uponReplyInvoke([this](const sdbus::Error* error, const std::vector<std::string>& capabilities) {
          isAsking_ = false;
          if (error != nullptr) return FailWaiting(SentenceOf(*error));
          capabilities_.emplace(capabilities.begin(), capabilities.end());
          SendWaiting();
        });
  });
  if (asked) return;
  isAsking_ = false;
  FailWaiting(asked.error().message);
}

void DesktopNotifications::SendWaiting() {
  if (!server_) return FailWaiting(SessionBus::Shared().LastError());
  if (!capabilities_) return AskCapabilities();
  // A failure calls the listener, which may show or withdraw other alerts.
  for (const Key& key : AlertsIn(State::Waiting)) {
    const auto found = alerts_.find(key);
    if (found != alerts_.end() && found->second.state == State::Waiting) Send(key, found->second);
  }
}

void DesktopNotifications::Send(const Key& key, Alert& alert) {
  const AlertContents& contents = alert.contents;
  const bool readsMarkup = Has("body-markup");
  const auto sent = TryOnBus([&] {
    server_->callMethodAsync("Notify")
        .onInterface(kInterface)
        .withTimeout(kDeadline)
        .withArguments(applicationName_, alert.id, std::string(), DisplayableText(contents.title),
                       readsMarkup ? DisplayableMarkup(contents.text) : DisplayableText(contents.text),
                       ActionsFor(contents), HintsFor(contents), kServersOwnExpiry)
        .uponReplyInvoke([this, key](const sdbus::Error* error, std::uint32_t id) { Answered(key, error, id); });
  });
  if (!sent) return Fail(key, sent.error().message);
  alert.state = State::Sent;
  alert.isChanged = false;
}

std::vector<std::string> DesktopNotifications::ActionsFor(const AlertContents& contents) const {
  if (!Has("actions")) return {};
  // On desktops where a click only closes the alert, as in Xfce, the default action is a button and needs a title.
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

void DesktopNotifications::Answered(const Key& key, const sdbus::Error* error, std::uint32_t id) {
  const auto found = alerts_.find(key);
  if (found == alerts_.end()) {
    if (error == nullptr) Close(id);
    return;
  }
  if (error != nullptr) return Fail(key, SentenceOf(*error));
  Alert& alert = found->second;
  keysById_.erase(alert.id);
  keysById_[id] = key;
  alert.id = id;
  alert.state = State::OnScreen;
  if (alert.isChanged) return Send(key, alert);
  listener_.shown(key, {serverIdentity_, id}, std::exchange(alert.isNew, false));
}

void DesktopNotifications::Close(std::uint32_t id) noexcept {
  if (!server_) return;
  // After a failure the alert is gone with its server.
  TryOnBus(
      [&] { server_->callMethod("CloseNotification").onInterface(kInterface).withArguments(id).dontExpectReply(); });
}

void DesktopNotifications::Received(sdbus::Message& message) {
  const std::string signal = message.getMemberName();
  std::uint32_t id = 0;
  std::uint32_t reason = 0;
  std::string text;
  const auto read = TryOnBus([&] {
    message >> id;
    if (signal == "NotificationClosed") {
      message >> reason;
    } else {
      message >> text;
    }
  });
  const auto found = keysById_.find(id);
  if (!read || found == keysById_.end()) return;
  const Key key = found->second;
  if (signal == "NotificationReplied") {
    Activated(key, UserNotificationActivation::Replied, text);
  } else if (signal == "ActionInvoked") {
    Activated(key, text == kDefaultAction ? UserNotificationActivation::ContentsClicked
                                          : UserNotificationActivation::ActionButtonClicked);
  } else if (signal == "NotificationClosed") {
    Closed(key, reason);
  }
}

void DesktopNotifications::Closed(const Key& key, std::uint32_t reason) {
  // A close signal while our replacement is in flight belongs to the old alert.
  if (alerts_.at(key).state != State::OnScreen) return;
  Withdraw(key);
  (reason == kDismissedByUser ? listener_.dismissed : listener_.gone)(key);
}

void DesktopNotifications::Activated(const Key& key, UserNotificationActivation activation, const std::string& reply) {
  // Some servers leave an alert on screen when it has been clicked.
  Withdraw(key);
  listener_.activated(key, activation, reply);
}

void DesktopNotifications::ServerChanged(bool isRunning) {
  LoseServer();
  if (!isRunning) return;
  if (auto* bus = SessionBus::Shared().Connection(); bus != nullptr) serverIdentity_ = OwnerIdentity(*bus, kService);
  if (!alerts_.empty()) AskCapabilities();
  listener_.serverChanged();
}

void DesktopNotifications::LoseServer() {
  capabilities_.reset();
  keysById_.clear();
  serverIdentity_.clear();
  for (const Key& key : AlertsIn(State::OnScreen)) {
    const auto found = alerts_.find(key);
    if (found == alerts_.end() || !found->second.server.empty()) continue;
    Alert& alert = found->second;
    alert.id = 0;
    alert.state = State::Waiting;
    // Show an alert again only once: it may be what crashed the server.
    if (!std::exchange(alert.wasReshown, true)) continue;
    alerts_.erase(found);
    listener_.gone(key);
  }
}

void DesktopNotifications::FailWaiting(const std::string& reason) {
  for (const Key& key : AlertsIn(State::Waiting)) Fail(key, reason);
}

void DesktopNotifications::Fail(const Key& key, const std::string& reason) {
  const auto found = alerts_.find(key);
  if (found == alerts_.end()) return;
  const bool isNew = found->second.isNew;
  Withdraw(key);
  if (isNew) return listener_.failed(key, reason);
  listener_.gone(key);
}

std::vector<DesktopNotifications::Key> DesktopNotifications::AlertsIn(State state) const {
  std::vector<Key> keys;
  for (const auto& [key, alert] : alerts_) {
    if (alert.state == state) keys.push_back(key);
  }
  return keys;
}

}  // namespace tessaro::platform
