#pragma once

#include <Foundation/Foundation.h>

using UNAuthorizationOptions = NSUInteger;
enum : UNAuthorizationOptions {
  UNAuthorizationOptionBadge = 1 << 0,
  UNAuthorizationOptionSound = 1 << 1,
  UNAuthorizationOptionAlert = 1 << 2,
};
using UNNotificationPresentationOptions = NSUInteger;
static const UNNotificationPresentationOptions UNNotificationPresentationOptionNone = 0;
enum : UNNotificationPresentationOptions {
  UNNotificationPresentationOptionSound = 1 << 1,
  UNNotificationPresentationOptionList API_AVAILABLE(macos(11.0)) = 1 << 3,
  UNNotificationPresentationOptionBanner API_AVAILABLE(macos(11.0)) = 1 << 4,
};
using UNNotificationActionOptions = NSUInteger;
static const UNNotificationActionOptions UNNotificationActionOptionNone = 0;
enum : UNNotificationActionOptions { UNNotificationActionOptionForeground = 1 << 2 };
using UNNotificationCategoryOptions = NSUInteger;
enum : UNNotificationCategoryOptions { UNNotificationCategoryOptionCustomDismissAction = 1 << 0 };

extern "C" NSString* const UNNotificationDismissActionIdentifier;
extern "C" NSString* const UNNotificationDefaultActionIdentifier;

@interface UNNotificationSound : NSObject
+ (instancetype)soundNamed:(NSString*)name;
@end
@interface UNNotificationContent : NSObject <NSCopying, NSMutableCopying>
@property(readonly, copy) NSString* title;
@property(readonly, copy) NSString* subtitle;
@property(readonly, copy) NSString* body;
@property(readonly, copy) NSDictionary* userInfo;
@end
@interface UNMutableNotificationContent : UNNotificationContent
@property(copy) NSString* title;
@property(copy) NSString* subtitle;
@property(copy) NSString* body;
@property(copy) NSDictionary* userInfo;
@property(copy) NSString* categoryIdentifier;
@property(copy) UNNotificationSound* sound;
@end
@interface UNNotificationTrigger : NSObject
@end
@interface UNTimeIntervalNotificationTrigger : UNNotificationTrigger
+ (instancetype)triggerWithTimeInterval:(NSTimeInterval)interval repeats:(BOOL)repeats;
- (NSDate*)nextTriggerDate;
@end
@interface UNNotificationRequest : NSObject
+ (instancetype)requestWithIdentifier:(NSString*)identifier
                              content:(UNNotificationContent*)content
                              trigger:(UNNotificationTrigger*)trigger;
@property(readonly, copy) NSString* identifier;
@property(readonly, copy) UNNotificationContent* content;
@property(readonly, copy) UNNotificationTrigger* trigger;
@end
@interface UNNotification : NSObject
@property(readonly, copy) UNNotificationRequest* request;
@end
@interface UNNotificationResponse : NSObject
@property(readonly, copy) UNNotification* notification;
@property(readonly, copy) NSString* actionIdentifier;
@end
@interface UNTextInputNotificationResponse : UNNotificationResponse
@property(readonly, copy) NSString* userText;
@end
@interface UNNotificationAction : NSObject
+ (instancetype)actionWithIdentifier:(NSString*)identifier
                               title:(NSString*)title
                             options:(UNNotificationActionOptions)options;
@end
@interface UNTextInputNotificationAction : UNNotificationAction
+ (instancetype)actionWithIdentifier:(NSString*)identifier
                               title:(NSString*)title
                             options:(UNNotificationActionOptions)options
                textInputButtonTitle:(NSString*)buttonTitle
                textInputPlaceholder:(NSString*)placeholder;
@end
@interface UNNotificationCategory : NSObject
+ (instancetype)categoryWithIdentifier:(NSString*)identifier
                               actions:(NSArray*)actions
                     intentIdentifiers:(NSArray*)intents
                               options:(UNNotificationCategoryOptions)options;
@end

@class UNUserNotificationCenter;
@protocol UNUserNotificationCenterDelegate <NSObject>
@optional
- (void)userNotificationCenter:(UNUserNotificationCenter*)center
       willPresentNotification:(UNNotification*)notification
         withCompletionHandler:(void (^)(UNNotificationPresentationOptions options))completionHandler;
- (void)userNotificationCenter:(UNUserNotificationCenter*)center
    didReceiveNotificationResponse:(UNNotificationResponse*)response
             withCompletionHandler:(void (^)(void))completionHandler;
@end
@interface UNUserNotificationCenter : NSObject
+ (UNUserNotificationCenter*)currentNotificationCenter;
@property(assign) id<UNUserNotificationCenterDelegate> delegate;
- (void)requestAuthorizationWithOptions:(UNAuthorizationOptions)options
                      completionHandler:(void (^)(BOOL granted, NSError* error))handler;
- (void)setNotificationCategories:(NSSet*)categories;
- (void)getNotificationCategoriesWithCompletionHandler:(void (^)(NSSet* categories))handler;
- (void)addNotificationRequest:(UNNotificationRequest*)request withCompletionHandler:(void (^)(NSError* error))handler;
- (void)getPendingNotificationRequestsWithCompletionHandler:(void (^)(NSArray* requests))handler;
- (void)removePendingNotificationRequestsWithIdentifiers:(NSArray*)identifiers;
- (void)getDeliveredNotificationsWithCompletionHandler:(void (^)(NSArray* notifications))handler;
- (void)removeDeliveredNotificationsWithIdentifiers:(NSArray*)identifiers;
@end
