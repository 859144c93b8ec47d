// GNUstep declares the notification centre, but Debian's is not built with it.

#import <AppKit/AppKit.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Platform/Common/AutoreleaseScope.h"
#include "Platform/Linux/Alerts/AlertFiles.h"
#include "Platform/Linux/Alerts/DesktopNotifications.h"
#import "Platform/Linux/Alerts/NSUserNotification+Desktop.h"
#include "Platform/Linux/Base/WallClockTimer.h"
#include "Platform/SoundPlayer.h"
#include "Platform/StandardDirectories.h"

// Delegates may have these methods, though the public protocol knows none of them.
@interface NSObject (NSUserNotificationCenterDelegateMethodsOfOurs)
- (void)userNotificationCenter:(NSUserNotificationCenter*)center didDismissAlert:(NSUserNotification*)notification;
- (void)userNotificationCenter:(NSUserNotificationCenter*)center
            ts_couldNotDeliver:(NSUserNotification*)notification
                        reason:(NSString*)reason;
@end

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

std::string Utf8(NSString* string) {
  NSData* bytes = [string dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
  return {static_cast<const char*>([bytes bytes]), [bytes length]};
}

NSString* ApplicationName() {
  id name = [[NSBundle mainBundle] objectForInfoDictionaryKey:@"CFBundleName"];
  return [name isKindOfClass:[NSString class]] ? name : [[NSProcessInfo processInfo] processName];
}

fs::path AlertDirectory() {
  return LogDirectory(Utf8([[NSProcessInfo processInfo] processName])).parent_path() / "alerts";
}

NSString* OrElse(NSString* string, NSString* other) { return [string length] > 0 ? string : other; }

std::string TextOf(NSUserNotification* alert) {
  NSMutableArray* lines = [NSMutableArray array];
  if ([[alert subtitle] length] > 0) [lines addObject:[alert subtitle]];
  if ([[alert informativeText] length] > 0) [lines addObject:[alert informativeText]];
  return Utf8([lines componentsJoinedByString:@"\n"]);
}

AlertContents ContentsOf(NSUserNotification* alert) {
  AlertContents contents;
  contents.title = Utf8(OrElse([alert title], ApplicationName()));
  contents.text = TextOf(alert);
  if ([alert soundName] != nil) contents.soundFile = SoundFileNamed(Utf8([alert soundName]));
  contents.defaultTitle = Utf8(NSLocalizedString(@"Show", nil));
  if ([alert hasActionButton]) {
    contents.actionTitle = Utf8(OrElse([alert actionButtonTitle], NSLocalizedString(@"Show", nil)));
  }
  if ([alert hasReplyButton]) {
    contents.reply = {Utf8(NSLocalizedString(@"Reply", nil)), Utf8([alert responsePlaceholder])};
  }
  return contents;
}

NSData* Archive(NSUserNotification* alert) {
  return [NSPropertyListSerialization dataWithPropertyList:[alert ts_propertyList]
                                                    format:NSPropertyListBinaryFormat_v1_0
                                                   options:0
                                                     error:nullptr];
}

// nil for what was not archived by us.
NSUserNotification* Unarchive(const std::string& bytes) {
  NSData* data = [NSData dataWithBytes:bytes.data() length:bytes.size()];
  id properties = nil;
  @try {
    properties = [NSPropertyListSerialization propertyListWithData:data options:0 format:nullptr error:nullptr];
  } @catch (NSException*) {
    return nil;
  }
  if (![properties isKindOfClass:[NSDictionary class]]) return nil;
  if (![[properties objectForKey:@"deliveryDate"] isKindOfClass:[NSDate class]]) return nil;
  return [[[NSUserNotification alloc] initWithTs_propertyList:properties] autorelease];
}

NSUserNotificationActivationType ActivationOf(AlertEnd end) {
  switch (end) {
    case AlertEnd::ContentsClicked:
      return NSUserNotificationActivationTypeContentsClicked;
    case AlertEnd::ActionClicked:
      return NSUserNotificationActivationTypeActionButtonClicked;
    case AlertEnd::Replied:
      return NSUserNotificationActivationTypeReplied;
    default:
      return NSUserNotificationActivationTypeNone;
  }
}

// What the one notification centre of a process knows.
class Center {
 public:
  static Center& Shared() {
    static Forever<Center> center;
    return *center;
  }

  id<NSUserNotificationCenterDelegate> delegate = nil;

  void Deliver(NSUserNotification* alert);
  void Schedule(NSUserNotification* alert);
  void RemoveDelivered(NSUserNotification* alert);
  void RemoveAllDelivered();
  void RemoveScheduled(NSUserNotification* alert);
  void RemoveAllScheduled();

  [[nodiscard]] NSArray* Delivered() const;
  [[nodiscard]] NSArray* Scheduled() const;

  static constexpr EndStage kEnd = EndStage::Services;
  void Close() noexcept;

 private:
  using Alert = DesktopNotifications::Alert;

  struct ScheduledAlert {
    Ref<NSUserNotification> alert;
    fs::path file;
  };

  friend class Forever<Center>;
  Center();
  void Restore();
  void DeliverDue();
  void SetTimer();
  void Shown(Alert number, bool playsSound);
  void Ended(Alert number, AlertEnd end, const std::string& text);
  [[nodiscard]] Alert NumberFor(NSUserNotification* alert);
  [[nodiscard]] bool IsPresented(NSUserNotification* alert) const;
  [[nodiscard]] std::vector<ScheduledAlert>::iterator Find(NSUserNotification* alert);
  void Complain(NSUserNotification* alert, const std::string& reason) const;

  std::map<Alert, Ref<NSUserNotification>> delivered_;  // in the order of delivery
  std::vector<ScheduledAlert> scheduled_;
  Alert lastNumber_ = 0;
  AlertFiles files_{AlertDirectory()};
  WallClockTimer timer_{[this] { DeliverDue(); }};
  std::optional<DesktopNotifications> server_;
};

// The same for the delegate, which may raise while the bus is at work.
NSUserNotificationCenter* TheCenter() { return [NSUserNotificationCenter defaultUserNotificationCenter]; }

Center::Center() {
  server_.emplace(Utf8(ApplicationName()), DesktopNotifications::Listener{
                                               [this](Alert number, bool playsSound) {
                                                 WithAutoreleasePool([&] { Shown(number, playsSound); });
                                               },
                                               [this](Alert number, AlertEnd end, const std::string& text) {
                                                 WithAutoreleasePool([&] { Ended(number, end, text); });
                                               },
                                           });
  Restore();
}

void Center::Restore() {
  for (const AlertFiles::File& file : files_.All()) {
    if (NSUserNotification* alert = Unarchive(file.contents)) scheduled_.push_back({Retain(alert), file.path});
  }
  // Not at once: whoever asks for the centre has yet to become its delegate.
  SetTimer();
}

void Center::Deliver(NSUserNotification* alert) {
  const Alert number = NumberFor(alert);
  delivered_[number] = Retain(alert);
  [alert ts_setDelivered:IsPresented(alert)];
  if ([alert isPresented] && server_) return server_->Show(number, ContentsOf(alert));
  if ([delegate respondsToSelector:@selector(userNotificationCenter:didDeliverNotification:)]) {
    [delegate userNotificationCenter:TheCenter() didDeliverNotification:alert];
  }
}

// An alert takes the place of an earlier one of the same identifier.
Center::Alert Center::NumberFor(NSUserNotification* alert) {
  for (const auto& [number, each] : delivered_) {
    if (each.get() == alert || [[each identifier] isEqual:[alert identifier]]) return number;
  }
  return ++lastNumber_;
}

bool Center::IsPresented(NSUserNotification* alert) const {
  if (![NSApp isActive]) return true;
  if (![delegate respondsToSelector:@selector(userNotificationCenter:shouldPresentNotification:)]) return false;
  return [delegate userNotificationCenter:TheCenter() shouldPresentNotification:alert] != NO;
}

void Center::Schedule(NSUserNotification* alert) {
  if ([alert deliveryDate] == nil) return Deliver(alert);
  RemoveScheduled(alert);
  NSData* archive = Archive(alert);
  fs::path file = files_.Keep({static_cast<const char*>([archive bytes]), [archive length]});
  if (file.empty()) Complain(alert, "it can't be kept beyond the end of this process");
  scheduled_.push_back({Retain(alert), std::move(file)});
  SetTimer();
}

void Center::DeliverDue() {
  for (;;) {
    const auto due = std::find_if(scheduled_.begin(), scheduled_.end(), [](const ScheduledAlert& each) {
      return [[each.alert deliveryDate] timeIntervalSinceNow] <= 0;
    });
    if (due == scheduled_.end()) break;
    const ScheduledAlert each = *due;
    scheduled_.erase(due);
    Deliver(each.alert);
    AlertFiles::Remove(each.file);
  }
  SetTimer();
}

void Center::SetTimer() {
  std::optional<WallClockTimer::Seconds> next;
  for (const ScheduledAlert& each : scheduled_) {
    const WallClockTimer::Seconds due([[each.alert deliveryDate] timeIntervalSince1970]);
    if (!next || due < *next) next = due;
  }
  timer_.Set(next);
}

void Center::RemoveDelivered(NSUserNotification* alert) {
  const auto found = std::find_if(delivered_.begin(), delivered_.end(),
                                  [alert](const auto& each) { return each.second.get() == alert; });
  if (found == delivered_.end()) return;
  if (server_) server_->Withdraw(found->first);
  delivered_.erase(found);
}

void Center::RemoveAllDelivered() {
  for (const auto& [number, alert] : std::exchange(delivered_, {})) {
    if (server_) server_->Withdraw(number);
  }
}

void Center::RemoveScheduled(NSUserNotification* alert) {
  const auto found = Find(alert);
  if (found == scheduled_.end()) return;
  AlertFiles::Remove(found->file);
  scheduled_.erase(found);
  SetTimer();
}

std::vector<Center::ScheduledAlert>::iterator Center::Find(NSUserNotification* alert) {
  return std::find_if(scheduled_.begin(), scheduled_.end(),
                      [alert](const ScheduledAlert& each) { return each.alert.get() == alert; });
}

void Center::RemoveAllScheduled() {
  for (const ScheduledAlert& each : std::exchange(scheduled_, {})) AlertFiles::Remove(each.file);
  SetTimer();
}

NSArray* Center::Delivered() const {
  NSMutableArray* alerts = [NSMutableArray arrayWithCapacity:delivered_.size()];
  for (const auto& [number, alert] : delivered_) [alerts addObject:alert];
  return alerts;
}

NSArray* Center::Scheduled() const {
  NSMutableArray* alerts = [NSMutableArray arrayWithCapacity:scheduled_.size()];
  for (const ScheduledAlert& each : scheduled_) [alerts addObject:each.alert];
  return alerts;
}

void Center::Shown(Alert number, bool playsSound) {
  const auto found = delivered_.find(number);
  if (found == delivered_.end()) return;
  const Ref<NSUserNotification> alert = found->second;
  if (!playsSound && [alert soundName] != nil) {
    SoundPlayer::Shared().Play(SoundFileNamed(Utf8([alert soundName])), nullptr);
  }
  if ([delegate respondsToSelector:@selector(userNotificationCenter:didDeliverNotification:)]) {
    [delegate userNotificationCenter:TheCenter() didDeliverNotification:alert];
  }
}

void Center::Ended(Alert number, AlertEnd end, const std::string& text) {
  const auto found = delivered_.find(number);
  if (found == delivered_.end()) return;
  const Ref<NSUserNotification> alert = found->second;
  delivered_.erase(found);
  if (end == AlertEnd::NotShown) return Complain(alert, text);
  if (end == AlertEnd::Dismissed) {
    if (![delegate respondsToSelector:@selector(userNotificationCenter:didDismissAlert:)]) return;
    return [static_cast<NSObject*>(delegate) userNotificationCenter:TheCenter() didDismissAlert:alert];
  }
  NSString* response = end == AlertEnd::Replied ? [NSString stringWithUTF8String:text.c_str()] : nil;
  [alert ts_setActivationType:ActivationOf(end) response:response];
  if (![delegate respondsToSelector:@selector(userNotificationCenter:didActivateNotification:)]) return;
  [delegate userNotificationCenter:TheCenter() didActivateNotification:alert];
}

void Center::Complain(NSUserNotification* alert, const std::string& reason) const {
  if (![delegate respondsToSelector:@selector(userNotificationCenter:ts_couldNotDeliver:reason:)]) return;
  [static_cast<NSObject*>(delegate) userNotificationCenter:TheCenter()
                                        ts_couldNotDeliver:alert
                                                    reason:[NSString stringWithUTF8String:reason.c_str()]];
}

void Center::Close() noexcept {
  timer_.Set(std::nullopt);
  server_.reset();
}

}  // namespace

}  // namespace tessaro::platform

using tessaro::platform::Center;

@implementation NSUserNotificationCenter

+ (NSUserNotificationCenter*)defaultUserNotificationCenter {
  static NSUserNotificationCenter* const center = [[self alloc] init];
  return center;
}

- (id<NSUserNotificationCenterDelegate>)delegate {
  return Center::Shared().delegate;
}

- (void)setDelegate:(id<NSUserNotificationCenterDelegate>)delegate {
  Center::Shared().delegate = delegate;
}

- (NSArray*)scheduledNotifications {
  return Center::Shared().Scheduled();
}

- (void)setScheduledNotifications:(NSArray*)notifications {
  Center::Shared().RemoveAllScheduled();
  for (NSUserNotification* each in notifications) Center::Shared().Schedule(each);
}

- (void)scheduleNotification:(NSUserNotification*)notification {
  Center::Shared().Schedule(notification);
}

- (void)removeScheduledNotification:(NSUserNotification*)notification {
  Center::Shared().RemoveScheduled(notification);
}

- (NSArray*)deliveredNotifications {
  return Center::Shared().Delivered();
}

- (void)deliverNotification:(NSUserNotification*)notification {
  Center::Shared().Deliver(notification);
}

- (void)removeDeliveredNotification:(NSUserNotification*)notification {
  Center::Shared().RemoveDelivered(notification);
}

- (void)removeAllDeliveredNotifications {
  Center::Shared().RemoveAllDelivered();
}

@end
