#include "Platform/Linux/Alerts/DesktopNotifications.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>

#include "Base/TsUnicode.h"
#include "Platform/Linux/Base/SessionBus.h"
#include "Platform/SoundPlayer.h"

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

// The bus refuses NUL; the other control characters are not allowed in markup.
bool IsControl(char byte) {
  const auto code = static_cast<unsigned char>(byte);
  return (code < 0x20U && byte != '\n' && byte != '\t') || code == 0x7FU;
}

std::string Shortened(std::string_view text) {
  const std::string_view kept = Utf8Prefix(text, kMostBytes);
  return std::string(kept) + (kept.size() < text.size() ? kEllipsis : "");
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

std::string OrElse(const std::optional<std::string>& text, const std::string& other) {
  return text && !text->empty() ? *text : other;
}

std::string BodyOf(const UserNotification& alert) {
  const std::string first = alert.subtitle.value_or("");
  const std::string second = alert.text.value_or("");
  return first.empty() || second.empty() ? first + second : first + "\n" + second;
}

}  // namespace

void DesktopNotifications::Appear(sdbus::IConnection& bus) {
  signals_ = bus.addMatch(
      std::string("type='signal',sender='") + kService + "',path='" + kPath + "',interface='" + kInterface + "'",
      [this](sdbus::Message& message) { Received(message); });
  owner_ = WatchOwner(bus, kService, [this](bool isRunning) { ServerChanged(isRunning); });
  server_ = sdbus::createProxy(bus, kService, kPath);
  identity_ = OwnerIdentity(bus, kService);
  listener_.ServerAppeared();
}

void DesktopNotifications::Disappear() noexcept {
  signals_.reset();
  owner_.reset();
  server_.reset();
  isAsking_ = false;
  capabilities_.reset();
  identity_.clear();
  listener_.BusLost();
}

void DesktopNotifications::ServerChanged(bool isRunning) {
  capabilities_.reset();
  identity_.clear();
  listener_.ServerLost();
  if (!isRunning) return;
  if (auto* bus = SessionBus::Shared().Connection(); bus != nullptr) identity_ = OwnerIdentity(*bus, kService);
  listener_.ServerAppeared();
}

bool DesktopNotifications::IsReady() noexcept {
  if (!server_) {
    listener_.ServerReady(Fail(SessionBus::Shared().LastError()));
    return false;
  }
  if (!capabilities_ && !std::exchange(isAsking_, true)) AskCapabilities();
  return capabilities_.has_value();
}

void DesktopNotifications::AskCapabilities() {
  const auto asked = TryOnBus([this] {
    server_->callMethodAsync("GetCapabilities")
        .onInterface(kInterface)
        .withTimeout(kDeadline)
        .uponReplyInvoke([this](const sdbus::Error* error, const std::vector<std::string>& capabilities) {
          isAsking_ = false;
          if (error != nullptr) return listener_.ServerReady(Fail(SentenceOf(*error)));
          capabilities_.emplace(capabilities.begin(), capabilities.end());
          listener_.ServerReady({});
        });
  });
  if (asked) return;
  isAsking_ = false;
  listener_.ServerReady(asked);
}

Result<void> DesktopNotifications::Show(Id id, const UserNotification& alert,
                                        std::function<void(const Result<Id>&)> reply) noexcept {
  const std::string body = BodyOf(alert);
  return TryOnBus([&] {
    server_->callMethodAsync("Notify")
        .onInterface(kInterface)
        .withTimeout(kDeadline)
        .withArguments(application_.name, id, std::string(), DisplayableText(OrElse(alert.title, application_.name)),
                       Has("body-markup") ? DisplayableMarkup(body) : DisplayableText(body), ActionsFor(alert),
                       HintsFor(alert), kServersOwnExpiry)
        .uponReplyInvoke([reply = std::move(reply)](const sdbus::Error* error, Id shown) {
          reply(error != nullptr ? Result<Id>(Fail(SentenceOf(*error))) : shown);
        });
  });
}

std::vector<std::string> DesktopNotifications::ActionsFor(const UserNotification& alert) const {
  if (!Has("actions")) return {};
  // On desktops where a click only closes the alert, as in Xfce, the default action is a button and needs a title.
  std::vector<std::string> actions = {kDefaultAction, application_.showTitle};
  if (alert.hasReplyField) {
    actions.insert(actions.end(), {Has("inline-reply") ? kInlineReplyAction : kButtonAction, application_.replyTitle});
  } else if (alert.hasActionButton) {
    actions.insert(actions.end(), {kButtonAction, OrElse(alert.actionButtonTitle, application_.showTitle)});
  }
  return actions;
}

std::map<std::string, sdbus::Variant> DesktopNotifications::HintsFor(const UserNotification& alert) const {
  std::map<std::string, sdbus::Variant> hints;
  const std::string sound = alert.soundName && Has("sound") ? SoundFileNamed(*alert.soundName) : "";
  if (!sound.empty()) {
    hints.emplace("sound-file", sound);
  } else {
    hints.emplace("suppress-sound", true);
  }
  if (alert.hasReplyField && Has("inline-reply")) {
    hints.emplace("x-kde-reply-placeholder-text", DisplayableText(alert.replyPlaceholder.value_or("")));
  }
  return hints;
}

void DesktopNotifications::Close(Id id) noexcept {
  if (!server_) return;
  // After a failure the alert is gone with its server.
  TryOnBus(
      [&] { server_->callMethod("CloseNotification").onInterface(kInterface).withArguments(id).dontExpectReply(); });
}

void DesktopNotifications::Received(sdbus::Message& message) {
  const std::string signal = message.getMemberName();
  const bool isClosed = signal == "NotificationClosed";
  Id id = 0;
  std::uint32_t reason = 0;
  std::string text;
  const auto read = TryOnBus([&] {
    message >> id;
    if (isClosed) {
      message >> reason;
    } else {
      message >> text;
    }
  });
  if (!read) return;
  if (isClosed) {
    listener_.AlertClosed(id, reason == kDismissedByUser);
  } else if (signal == "NotificationReplied") {
    listener_.AlertActivated(id, UserNotificationActivation::Replied, text);
  } else if (signal == "ActionInvoked") {
    const bool isDefault = text == kDefaultAction;
    listener_.AlertActivated(
        id, isDefault ? UserNotificationActivation::ContentsClicked : UserNotificationActivation::ActionButtonClicked,
        {});
  }
}

}  // namespace tessaro::platform
