#include "Platform/UserNotifications.h"

#include <algorithm>
#include <set>
#include <utility>

#include "Base/Lifetime.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Common/AutoreleaseScope.h"
#include "Platform/MainQueue.h"
#include "Platform/macOS/Guarded.h"
#include "Platform/macOS/NotificationCategory.h"
#include "Platform/macOS/NotificationContent.h"

// UNUserNotificationCenter, for a process in a signed bundle with an identifier. The user is asked for permission at
// the first start. The centre answers on queues of its own, and has one delegate: the host's is taken over, and gets
// everything that is not this module's. While the application is in the background the system shows scheduled alerts
// by itself: shouldPresent and delivered are called in the foreground only. Main thread only.

namespace tessaro::platform {
class SystemNotifications;
}

@interface TsNotificationDelegate : NSObject <UNUserNotificationCenterDelegate> {
  tessaro::platform::SystemNotifications* _owner;
  id<UNUserNotificationCenterDelegate> _previous;
}
- (instancetype)initWithOwner:(tessaro::platform::SystemNotifications*)owner
                     previous:(id<UNUserNotificationCenterDelegate>)previous;
@end

namespace tessaro::platform {

namespace {

constexpr UNAuthorizationOptions kPermissions =
    UNAuthorizationOptionAlert | UNAuthorizationOptionSound | UNAuthorizationOptionBadge;
constexpr UNNotificationPresentationOptions kShown = UNNotificationPresentationOptionBanner |
                                                     UNNotificationPresentationOptionList |
                                                     UNNotificationPresentationOptionSound;
constexpr NSTimeInterval kSoon = 0.1;

UserNotifications::Moment Now() { return std::chrono::system_clock::now().time_since_epoch(); }

std::optional<UserNotifications::Moment> DueOf(UNNotificationRequest* request) {
  UNNotificationTrigger* trigger = [request trigger];
  if (![trigger isKindOfClass:[UNTimeIntervalNotificationTrigger class]]) return std::nullopt;
  NSDate* due = [static_cast<UNTimeIntervalNotificationTrigger*>(trigger) nextTriggerDate];
  if (due == nil) return std::nullopt;
  return UserNotifications::Moment([due timeIntervalSince1970]);
}

UserNotifications::Key KeyOf(UNNotificationRequest* request) { return KeyOfRequest(TsStdString([request identifier])); }

NSArray* IdentifiersOf(const UserNotifications::Key& key) { return @[ TsNSString(RequestIdentifierOf(key)) ]; }

}  // namespace

class SystemNotifications final : public UserNotifications {
 public:
  static constexpr EndStage kEnd = EndStage::Services;

  void Start(Application application, Listener listener) noexcept override {
    application_ = std::move(application);
    listener_ = std::move(listener);
    obstacle_ = Guarded([this] {
      center_ = Retain([UNUserNotificationCenter currentNotificationCenter]);
      delegate_ = Adopt([[TsNotificationDelegate alloc] initWithOwner:this previous:[center_ delegate]]);
      [center_ setDelegate:delegate_];
      [center_ requestAuthorizationWithOptions:kPermissions
                             completionHandler:^(BOOL isGranted, NSError* error) {
                               if (!isGranted) TsLogTextWarning("No alerts are shown: " + ReasonOf(error));
                             }];
      Restore();
    });
    if (!obstacle_.empty()) TsLogTextWarning("This process has no notification centre: " + obstacle_);
  }

  void Deliver(const Key& key, const UserNotification& alert) noexcept override { Add(key, alert, nil); }

  void Schedule(const Key& key, const UserNotification& alert, Moment due) noexcept override {
    const NSTimeInterval wait = std::max((due - Now()).count(), kSoon);
    scheduled_.insert(key);
    Add(key, alert, [UNTimeIntervalNotificationTrigger triggerWithTimeInterval:wait repeats:NO]);
  }

  void Withdraw(const Key& key) noexcept override {
    scheduled_.erase(key);
    [center_ removePendingNotificationRequestsWithIdentifiers:IdentifiersOf(key)];
    [center_ removeDeliveredNotificationsWithIdentifiers:IdentifiersOf(key)];
  }

  // The host's alerts stay.
  void WithdrawDelivered() noexcept override {
    [center_ getDeliveredNotificationsWithCompletionHandler:^(NSArray* notifications) {
      for (UNNotification* each in notifications) {
        const Key key = KeyOf([each request]);
        if (!key.empty()) [center_ removeDeliveredNotificationsWithIdentifiers:IdentifiersOf(key)];
      }
    }];
  }

  void Close() noexcept { listener_ = {}; }

  // From any thread: whether an alert in the foreground is shown.
  void Present(const Key& key, std::function<void(bool)> answer) {
    MainQueue::Shared().Post([this, key, answer = std::move(answer)] {
      const bool isScheduled = scheduled_.erase(key) > 0;
      const bool isShown = !isScheduled || listener_.shouldPresent == nullptr || listener_.shouldPresent(key);
      answer(isShown);
      if (listener_.delivered) listener_.delivered(key);
    });
  }

  void Activate(const Key& key, UserNotificationActivation activation, std::string reply) {
    MainQueue::Shared().Post([this, key, activation, reply = std::move(reply)] {
      [center_ removeDeliveredNotificationsWithIdentifiers:IdentifiersOf(key)];
      if (listener_.activated) listener_.activated(key, activation, reply);
    });
  }

  void Dismiss(const Key& key) {
    MainQueue::Shared().Post([this, key] {
      if (listener_.dismissed) listener_.dismissed(key);
    });
  }

 private:
  void Restore() {
    [center_ getDeliveredNotificationsWithCompletionHandler:^(NSArray* notifications) {
      for (UNNotification* each in notifications) Restore([each request], std::nullopt);
    }];
    [center_ getPendingNotificationRequestsWithCompletionHandler:^(NSArray* requests) {
      for (UNNotificationRequest* each in requests) Restore(each, DueOf(each));
    }];
  }

  void Restore(UNNotificationRequest* request, std::optional<Moment> due) {
    const Key key = KeyOf(request);
    if (key.empty()) return;
    MainQueue::Shared().Post([this, key, alert = AlertOf([request content]), due] {
      if (due) scheduled_.insert(key);
      if (listener_.restored) listener_.restored(key, alert, due);
    });
  }

  void Add(const Key& key, const UserNotification& alert, UNNotificationTrigger* trigger) {
    if (!obstacle_.empty()) return Report(key, obstacle_);
    const std::string failure = Guarded([&] {
      const NotificationCategory category = CategoryOf(alert, application_);
      Register(category);
      UNNotificationRequest* request =
          [UNNotificationRequest requestWithIdentifier:TsNSString(RequestIdentifierOf(key))
                                               content:NewContent(alert, category).Autoreleased()
                                               trigger:trigger];
      [center_ addNotificationRequest:request
                withCompletionHandler:^(NSError* error) {
                  if (error != nil) Report(key, ReasonOf(error));
                }];
    });
    if (!failure.empty()) Report(key, failure);
  }

  // The centre replaces all categories at once; the host's are kept as it knows them.
  void Register(const NotificationCategory& category) {
    const std::string identifier = category.Identifier();
    if (!categories_.insert(identifier).second) return;
    [own_ addObject:CategoryObject(category)];
    [center_ getNotificationCategoriesWithCompletionHandler:^(NSSet* present) {
      MainQueue::Shared().Post([this, present = Retain(present)] {
        NSMutableSet* all = [NSMutableSet setWithCapacity:[present count]];
        [all addObjectsFromArray:[present allObjects]];
        [all addObjectsFromArray:own_];
        [center_ setNotificationCategories:all];
      });
    }];
  }

  void Report(const Key& key, std::string reason) {
    MainQueue::Shared().Post([this, key, reason = std::move(reason)] {
      if (listener_.failed) listener_.failed(key, reason);
    });
  }

  Application application_;
  Listener listener_;
  std::string obstacle_;
  Ref<UNUserNotificationCenter> center_;
  Ref<TsNotificationDelegate> delegate_;
  std::set<Key> scheduled_;
  std::set<std::string> categories_;
  Ref<NSMutableArray> own_ = Adopt([[NSMutableArray alloc] init]);
};

UserNotifications& UserNotifications::Shared() {
  static Forever<SystemNotifications> notifications;
  return *notifications;
}

}  // namespace tessaro::platform

@implementation TsNotificationDelegate

- (instancetype)initWithOwner:(tessaro::platform::SystemNotifications*)owner
                     previous:(id<UNUserNotificationCenterDelegate>)previous {
  self = [super init];
  if (self == nil) return nil;
  _owner = owner;
  _previous = previous;
  return self;
}

- (BOOL)respondsToSelector:(SEL)selector {
  return [super respondsToSelector:selector] || [static_cast<id>(_previous) respondsToSelector:selector];
}

- (id)forwardingTargetForSelector:(SEL)selector {
  return _previous;
}

- (void)userNotificationCenter:(UNUserNotificationCenter*)center
       willPresentNotification:(UNNotification*)notification
         withCompletionHandler:(void (^)(UNNotificationPresentationOptions))completionHandler {
  const auto key = tessaro::platform::KeyOf([notification request]);
  if (!key.empty()) {
    const auto answer = Copy(static_cast<NSObject*>(static_cast<id>(completionHandler)));
    return _owner->Present(key, [answer](bool isShown) {
      const auto complete = (void (^)(UNNotificationPresentationOptions)) static_cast<id>(answer.get());
      complete(isShown ? tessaro::platform::kShown : UNNotificationPresentationOptionNone);
    });
  }
  if ([static_cast<id>(_previous) respondsToSelector:_cmd])
    return [_previous userNotificationCenter:center
                     willPresentNotification:notification
                       withCompletionHandler:completionHandler];
  completionHandler(UNNotificationPresentationOptionNone);
}

- (void)userNotificationCenter:(UNUserNotificationCenter*)center
    didReceiveNotificationResponse:(UNNotificationResponse*)response
             withCompletionHandler:(void (^)(void))completionHandler {
  using tessaro::platform::UserNotificationActivation;
  const auto key = tessaro::platform::KeyOf([[response notification] request]);
  if (key.empty() && [static_cast<id>(_previous) respondsToSelector:_cmd])
    return [_previous userNotificationCenter:center
              didReceiveNotificationResponse:response
                       withCompletionHandler:completionHandler];
  NSString* action = [response actionIdentifier];
  if (key.empty()) {
    // The host's, which has no delegate for it.
  } else if ([action isEqualToString:UNNotificationDismissActionIdentifier]) {
    _owner->Dismiss(key);
  } else if ([action isEqualToString:tessaro::platform::kReplyAction]) {
    NSString* reply = [static_cast<UNTextInputNotificationResponse*>(response) userText];
    _owner->Activate(key, UserNotificationActivation::Replied, TsStdString(reply));
  } else {
    const bool isButton = [action isEqualToString:tessaro::platform::kButtonAction];
    _owner->Activate(
        key, isButton ? UserNotificationActivation::ActionButtonClicked : UserNotificationActivation::ContentsClicked,
        "");
  }
  completionHandler();
}

@end
