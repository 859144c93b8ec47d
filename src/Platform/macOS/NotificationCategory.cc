#include "Platform/macOS/NotificationCategory.h"

namespace tessaro::platform {

namespace {

constexpr std::string_view kPrefix = "tessaro:";

}  // namespace

std::string NotificationCategory::Identifier() const {
  // Lengths keep two texts from running into each other.
  const std::string_view kinds[] = {"plain", "button", "reply"};
  return std::string(kPrefix) + std::string(kinds[static_cast<int>(kind)]) + ":" + std::to_string(title.size()) + ":" +
         title + ":" + placeholder;
}

NotificationCategory CategoryOf(const UserNotification& alert, const UserNotifications::Application& application) {
  if (alert.hasReplyField) {
    return {NotificationCategory::Kind::Reply, application.replyTitle, alert.replyPlaceholder.value_or("")};
  }
  if (!alert.hasActionButton) return {};
  return {NotificationCategory::Kind::Button, alert.actionButtonTitle.value_or(application.showTitle), {}};
}

std::string RequestIdentifierOf(const UserNotifications::Key& key) { return std::string(kPrefix) + key; }

UserNotifications::Key KeyOfRequest(std::string_view identifier) {
  if (!identifier.starts_with(kPrefix)) return {};
  return std::string(identifier.substr(kPrefix.size()));
}

}  // namespace tessaro::platform
