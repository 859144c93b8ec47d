#import "Notifications/TsUserNotificationCenter.h"

#include <algorithm>
#include <optional>
#include <string>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Cocoa.h"

namespace platform = tessaro::platform;

using platform::UserNotification;
using platform::UserNotificationActivation;
using platform::UserNotifications;

// ---- The alert

namespace {

std::optional<std::string> Utf8(NSString* string) {
  return string != nil ? std::optional(TsStdString(string)) : std::nullopt;
}

NSString* StringOrNil(const std::optional<std::string>& text) { return text ? TsNSString(*text) : nil; }

}  // namespace

#define TEXT_PROPERTY(getter, setter, field) \
  -(NSString*)getter {                       \
    return StringOrNil(_contents.field);     \
  }                                          \
  -(void)setter : (NSString*)value {         \
    _contents.field = Utf8(value);           \
  }

#define FLAG_PROPERTY(getter, setter, field) \
  -(BOOL)getter {                            \
    return _contents.field;                  \
  }                                          \
  -(void)setter : (BOOL)value {              \
    _contents.field = value != NO;           \
  }

@implementation TsAlert

TEXT_PROPERTY(identifier, setIdentifier, identifier)
TEXT_PROPERTY(title, setTitle, title)
TEXT_PROPERTY(subtitle, setSubtitle, subtitle)
TEXT_PROPERTY(informativeText, setInformativeText, text)
TEXT_PROPERTY(soundName, setSoundName, soundName)
FLAG_PROPERTY(hasActionButton, setHasActionButton, hasActionButton)
TEXT_PROPERTY(actionButtonTitle, setActionButtonTitle, actionButtonTitle)
FLAG_PROPERTY(hasReplyButton, setHasReplyButton, hasReplyField)
TEXT_PROPERTY(responsePlaceholder, setResponsePlaceholder, replyPlaceholder)

- (instancetype)initWithContents:(const UserNotification&)contents {
  if ((self = [super init]) != nil) _contents = contents;
  return self;
}

- (const UserNotification&)contents {
  return _contents;
}

TS_COPIED(NSDate, deliveryDate, DeliveryDate)

- (NSInteger)activationType {
  return _activationType;
}

- (NSAttributedString*)response {
  return _response;
}

- (void)setActivationType:(NSInteger)type response:(NSString*)response {
  _activationType = type;
  _response = response != nil ? Adopt([[NSAttributedString alloc] initWithString:response]) : nullptr;
}

- (NSString*)description {
  // Descriptions end in logs, and the texts are mail.
  return [NSString stringWithFormat:@"<%@: %p, identifier %@>", [self class], self, [self identifier]];
}

@end

// ---- The centre

namespace {

platform::UserNotifications::Application ThisApplication() {
  NSString* processName = [[NSProcessInfo processInfo] processName];
  NSString* name = As<NSString>([[NSBundle mainBundle] objectForInfoDictionaryKey:@"CFBundleName"]);
  return {
      .name = TsStdString(name != nil ? name : processName),
      .processName = TsStdString(processName),
      .showTitle = TsStdString(NSLocalizedString(@"Show", nil)),
      .replyTitle = TsStdString(NSLocalizedString(@"Reply", nil)),
  };
}

std::string NewKey() { return TsStdString([[NSUUID UUID] UUIDString]); }

template <typename List>
auto FindKey(List& list, const std::string& key) {
  return std::find_if(list.begin(), list.end(), [&](const auto& listed) { return listed.key == key; });
}

template <typename List>
auto FindAlert(List& list, TsAlert* alert) {
  return std::find_if(list.begin(), list.end(), [&](const auto& listed) { return listed.alert.get() == alert; });
}

template <typename List>
auto FindIdentifier(List& list, TsAlert* alert) {
  const auto& identifier = [alert contents].identifier;
  return std::find_if(list.begin(), list.end(), [&](const auto& listed) {
    return listed.alert.get() == alert || (identifier && [listed.alert contents].identifier == identifier);
  });
}

// The alert, which is not in the list any more; null when it was not.
template <typename List>
Ref<TsAlert> Take(List& list, const std::string& key) {
  const auto found = FindKey(list, key);
  if (found == list.end()) return nullptr;
  Ref<TsAlert> alert = found->alert;
  list.erase(found);
  return alert;
}

template <typename List>
NSArray* AlertsOf(const List& list) {
  NSMutableArray* alerts = [NSMutableArray arrayWithCapacity:list.size()];
  for (const auto& listed : list) [alerts addObject:listed.alert.get()];
  return alerts;
}

}  // namespace

@implementation TsUserNotificationCenter

+ (TsUserNotificationCenter*)defaultUserNotificationCenter {
  static Forever<Ref<TsUserNotificationCenter>> center(Adopt([[self alloc] init]));
  return *center;
}

- (instancetype)init {
  if ((self = [super init]) != nil) UserNotifications::Shared().Start(ThisApplication(), [self listener]);
  return self;
}

- (UserNotifications::Listener)listener {
  return {
      .restored = [self](const auto& key, const auto& alert, auto due) { [self restored:alert key:key due:due]; },
      .shouldPresent = [self](const auto& key) { return [self shouldPresent:key]; },
      .delivered = [self](const auto& key) { [self delivered:key]; },
      .activated = [self](const auto& key, auto activation,
                          const auto& reply) { [self activated:key as:activation reply:reply]; },
      .dismissed =
          [self](const auto& key) {
            const Ref<TsAlert> alert = Take(_delivered, key);
            if (alert) [self callDelegate:@selector(userNotificationCenter:didDismissAlert:) with:alert];
          },
      .gone = [self](const auto& key) { Take(_delivered, key); },
      .failed = [self](const auto& key, const auto& reason) { [self failed:key reason:reason]; },
      .notKept = [self](const auto& key, const auto& reason) { [self failed:key reason:reason]; },
  };
}

- (id<TsUserNotificationCenterDelegate>)delegate {
  return _delegate;
}

- (void)setDelegate:(id<TsUserNotificationCenterDelegate>)delegate {
  _delegate = delegate;
}

- (NSArray*)scheduledNotifications {
  return AlertsOf(_scheduled);
}

- (NSArray*)deliveredNotifications {
  return AlertsOf(_delivered);
}

- (void)scheduleNotification:(TsAlert*)alert {
  NSDate* date = [alert deliveryDate];
  if (date == nil) return [self deliverNotification:alert];
  [self removeScheduledNotification:alert];
  const std::string key = NewKey();
  _scheduled.push_back({key, Retain(alert)});
  UserNotifications::Shared().Schedule(key, [alert contents], UserNotifications::Moment([date timeIntervalSince1970]));
}

- (void)removeScheduledNotification:(TsAlert*)alert {
  const auto found = FindAlert(_scheduled, alert);
  if (found == _scheduled.end()) return;
  const std::string key = found->key;
  _scheduled.erase(found);
  UserNotifications::Shared().Withdraw(key);
}

- (void)deliverNotification:(TsAlert*)alert {
  const auto replaced = FindIdentifier(_delivered, alert);
  const std::string key = replaced != _delivered.end() ? replaced->key : NewKey();
  if (replaced != _delivered.end()) {
    replaced->alert = Retain(alert);
  } else {
    _delivered.push_back({key, Retain(alert)});
  }
  UserNotifications::Shared().Deliver(key, [alert contents]);
}

- (void)removeDeliveredNotification:(TsAlert*)alert {
  const auto found = FindAlert(_delivered, alert);
  if (found == _delivered.end()) return;
  const std::string key = found->key;
  _delivered.erase(found);
  UserNotifications::Shared().Withdraw(key);
}

- (void)removeAllDeliveredNotifications {
  _delivered.clear();
  UserNotifications::Shared().WithdrawDelivered();
}

// ---- Events of the system

- (void)restored:(const UserNotification&)contents
             key:(const std::string&)key
             due:(std::optional<UserNotifications::Moment>)due {
  const Ref<TsAlert> alert = Adopt([[TsAlert alloc] initWithContents:contents]);
  if (due) [alert setDeliveryDate:[NSDate dateWithTimeIntervalSince1970:due->count()]];
  (due ? _scheduled : _delivered).push_back({key, alert});
}

- (bool)shouldPresent:(const std::string&)key {
  if (![NSApp isActive]) return true;
  const auto delivered = FindKey(_delivered, key);
  const auto scheduled = FindKey(_scheduled, key);
  if (delivered == _delivered.end() && scheduled == _scheduled.end()) return false;
  const Ref<TsAlert> alert = delivered != _delivered.end() ? delivered->alert : scheduled->alert;
  return [_delegate userNotificationCenter:self shouldPresentNotification:alert] != NO;
}

- (void)delivered:(const std::string&)key {
  Ref<TsAlert> alert = Take(_scheduled, key);
  if (alert) {
    const auto replaced = FindIdentifier(_delivered, alert);
    const std::string old = replaced != _delivered.end() ? replaced->key : std::string();
    if (!old.empty()) _delivered.erase(replaced);
    _delivered.push_back({key, alert});
    if (!old.empty()) UserNotifications::Shared().Withdraw(old);
  } else if (const auto found = FindKey(_delivered, key); found != _delivered.end()) {
    alert = found->alert;
  }
  if (alert) [self callDelegate:@selector(userNotificationCenter:didDeliverNotification:) with:alert];
}

- (void)activated:(const std::string&)key as:(UserNotificationActivation)activation reply:(const std::string&)reply {
  const Ref<TsAlert> alert = Take(_delivered, key);
  if (!alert) return;
  NSString* response = activation == UserNotificationActivation::Replied ? TsNSString(reply) : nil;
  [alert setActivationType:static_cast<NSInteger>(activation) response:response];
  [self callDelegate:@selector(userNotificationCenter:didActivateNotification:) with:alert];
}

// The delegate posts notifications, whose observers may raise; the caller is C++.
- (void)callDelegate:(SEL)method with:(TsAlert*)alert {
  @try {
    [_delegate performSelector:method withObject:self withObject:alert];
  } @catch (NSException* exception) {
    TsLogError(@"An observer of %@ raised %@", alert, exception);
  }
}

// A scheduled alert stays scheduled.
- (void)failed:(const std::string&)key reason:(const std::string&)reason {
  Ref<TsAlert> alert = Take(_delivered, key);
  if (const auto found = FindKey(_scheduled, key); found != _scheduled.end()) alert = found->alert;
  if (alert) [_delegate userNotificationCenter:self ts_couldNotDeliver:alert reason:TsNSString(reason)];
}

@end
