#include "Platform/macOS/NotificationContent.h"

#include "Base/TsString.h"

namespace tessaro::platform {

namespace {

NSString* const kIdentifier = @"identifier";
NSString* const kSound = @"sound";
NSString* const kTitle = @"title";
NSString* const kButtonTitle = @"button";
NSString* const kPlaceholder = @"placeholder";
NSString* const kHasButton = @"hasButton";
NSString* const kHasReply = @"hasReply";

void Put(NSMutableDictionary* information, NSString* key, const std::optional<std::string>& text) {
  if (text) [information setObject:TsNSString(*text) forKey:key];
}

std::optional<std::string> Take(NSDictionary* information, NSString* key) {
  NSString* text = [information objectForKey:key];
  if (![text isKindOfClass:[NSString class]]) return std::nullopt;
  return TsStdString(text);
}

// Fields that the system's content lacks.
NSDictionary* InformationOf(const UserNotification& alert) {
  NSMutableDictionary* information = [NSMutableDictionary dictionary];
  Put(information, kIdentifier, alert.identifier);
  Put(information, kSound, alert.soundName);
  Put(information, kTitle, alert.title);
  Put(information, kButtonTitle, alert.actionButtonTitle);
  Put(information, kPlaceholder, alert.replyPlaceholder);
  [information setObject:[NSNumber numberWithBool:alert.hasActionButton] forKey:kHasButton];
  [information setObject:[NSNumber numberWithBool:alert.hasReplyField] forKey:kHasReply];
  return information;
}

std::optional<std::string> Text(NSString* text) {
  if ([text length] == 0) return std::nullopt;
  return TsStdString(text);
}

}  // namespace

Ref<UNMutableNotificationContent> NewContent(const UserNotification& alert, const NotificationCategory& category) {
  auto content = Adopt([[UNMutableNotificationContent alloc] init]);
  [content setTitle:TsNSString(alert.title.value_or(""))];
  [content setSubtitle:TsNSString(alert.subtitle.value_or(""))];
  [content setBody:TsNSString(alert.text.value_or(""))];
  [content setUserInfo:InformationOf(alert)];
  [content setCategoryIdentifier:TsNSString(category.Identifier())];
  if (alert.soundName) [content setSound:[UNNotificationSound soundNamed:TsNSString(*alert.soundName)]];
  return content;
}

UserNotification AlertOf(UNNotificationContent* content) {
  NSDictionary* information = [content userInfo];
  UserNotification alert;
  alert.identifier = Take(information, kIdentifier);
  alert.title = Take(information, kTitle);
  alert.subtitle = Text([content subtitle]);
  alert.text = Text([content body]);
  alert.soundName = Take(information, kSound);
  alert.hasActionButton = [[information objectForKey:kHasButton] boolValue];
  alert.actionButtonTitle = Take(information, kButtonTitle);
  alert.hasReplyField = [[information objectForKey:kHasReply] boolValue];
  alert.replyPlaceholder = Take(information, kPlaceholder);
  return alert;
}

UNNotificationCategory* CategoryObject(const NotificationCategory& category) {
  NSMutableArray* actions = [NSMutableArray array];
  NSString* title = TsNSString(category.title);
  if (category.kind == NotificationCategory::Kind::Button) {
    [actions addObject:[UNNotificationAction actionWithIdentifier:kButtonAction
                                                            title:title
                                                          options:UNNotificationActionOptionForeground]];
  }
  if (category.kind == NotificationCategory::Kind::Reply) {
    [actions addObject:[UNTextInputNotificationAction actionWithIdentifier:kReplyAction
                                                                     title:title
                                                                   options:UNNotificationActionOptionNone
                                                      textInputButtonTitle:title
                                                      textInputPlaceholder:TsNSString(category.placeholder)]];
  }
  return [UNNotificationCategory categoryWithIdentifier:TsNSString(category.Identifier())
                                                actions:actions
                                      intentIdentifiers:@[]
                                                options:UNNotificationCategoryOptionCustomDismissAction];
}

}  // namespace tessaro::platform
