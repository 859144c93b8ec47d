#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tessaro::platform {

// The contents of an alert. Texts are UTF-8, of any length and with any character; a system shows as much as it can.
struct UserNotification {
  std::optional<std::string> identifier;  // the application's own; comes back with alerts of earlier processes
  std::optional<std::string> title;       // by default the application's name
  std::optional<std::string> subtitle;
  std::optional<std::string> text;
  std::optional<std::string> soundName;  // as for SoundFileNamed(); silent without one
  bool hasActionButton = false;
  std::optional<std::string> actionButtonTitle;
  bool hasReplyField = false;  // takes the place of the action button
  std::optional<std::string> replyPlaceholder;
};

// In the numbers that scripts know them by.
enum class UserNotificationActivation : std::int32_t {
  None = 0,
  ContentsClicked = 1,
  ActionButtonClicked = 2,  // or a reply was asked for, where the system has no field for it
  Replied = 3,
  AdditionalActionClicked = 4,
};

// The alerts of this application in the system's notification centre.
//
// The caller names each alert by a key: letters, digits and hyphens, unique among all alerts that are scheduled or on
// screen, those of earlier processes included. An alert stays until it is activated, dismissed, gone or withdrawn; it
// outlives the process: on screen as long as the system keeps it there, scheduled until it has been delivered.
//
// Main thread only. Nothing throws, and nothing waits for the system. Listeners are called on the main thread, possibly
// before the causing call returns; they may call any function here.
class UserNotifications {
 public:
  using Key = std::string;
  // Since the beginning of 1970 in UTC, by the wall clock.
  using Moment = std::chrono::duration<double>;

  struct Application {
    std::string name;         // as users know it
    std::string processName;  // names the folder where alerts are kept, if the system does not keep them
    std::string showTitle;    // of a click on an alert, where that is a button
    std::string replyTitle;
  };

  struct Listener {
    // An alert of an earlier process: on screen, or scheduled for `due`. During Start(), or later.
    std::function<void(const Key&, const UserNotification&, std::optional<Moment> due)> restored;
    // Whether to show an alert that is due. One that is not shown counts as delivered, and ends with that.
    std::function<bool(const Key&)> shouldPresent;
    std::function<void(const Key&)> delivered;

    // Each of these ends the alert.
    std::function<void(const Key&, UserNotificationActivation, const std::string& reply)> activated;
    std::function<void(const Key&)> dismissed;  // by the user
    std::function<void(const Key&)> gone;       // expired, or closed by the system

    // The alert could not be shown. One that was scheduled stays so, and is tried again when the system has changed or
    // the application is started the next time; any other has ended.
    std::function<void(const Key&, const std::string& reason)> failed;
    // The alert is shown on time as long as this process lives, but cannot be kept longer.
    std::function<void(const Key&, const std::string& reason)> notKept;
  };

  static UserNotifications& Shared();

  // Once in a process, before anything else.
  virtual void Start(Application application, Listener listener) noexcept = 0;

  // Shows an alert now. One on screen with the same key is replaced.
  virtual void Deliver(const Key& key, const UserNotification& alert) noexcept = 0;

  // Shows an alert later, also when the process has been restarted by then. One that is due is shown soon, never before
  // this returns.
  virtual void Schedule(const Key& key, const UserNotification& alert, Moment due) noexcept = 0;

  // Ends an alert, scheduled or on screen, without a call to the listener. Unknown keys are ignored.
  virtual void Withdraw(const Key& key) noexcept = 0;

  // Ends all alerts that are on screen or about to be.
  virtual void WithdrawDelivered() noexcept = 0;

 protected:
  UserNotifications() = default;
  virtual ~UserNotifications() = default;
  UserNotifications(const UserNotifications&) = delete;
  UserNotifications& operator=(const UserNotifications&) = delete;
};

}  // namespace tessaro::platform
