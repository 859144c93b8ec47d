#pragma once

#import <Foundation/Foundation.h>

#include "Base/Ref.h"
#include "Platform/UserNotifications.h"

// An alert for TsUserNotificationCenter, with the methods of Cocoa's NSUserNotification. Main thread only.
@interface TsAlert : NSObject {
 @private
  tessaro::platform::UserNotification _contents;
  Ref<NSDate> _deliveryDate;
  Ref<NSAttributedString> _response;
  NSInteger _activationType;
}

@property(nonatomic, copy) NSString* identifier;
@property(nonatomic, copy) NSString* title;
@property(nonatomic, copy) NSString* subtitle;
@property(nonatomic, copy) NSString* informativeText;
@property(nonatomic, copy) NSString* soundName;
@property(nonatomic) BOOL hasActionButton;
@property(nonatomic, copy) NSString* actionButtonTitle;
@property(nonatomic) BOOL hasReplyButton;
@property(nonatomic, copy) NSString* responsePlaceholder;
@property(nonatomic, copy) NSDate* deliveryDate;

// How the user has activated the alert, as a UserNotificationActivation, and the reply.
@property(nonatomic, readonly) NSInteger activationType;
@property(nonatomic, readonly) NSAttributedString* response;

// ---- For the centre

- (instancetype)initWithContents:(const tessaro::platform::UserNotification&)contents;

@property(nonatomic, readonly) const tessaro::platform::UserNotification& contents;

// nil: no reply.
- (void)setActivationType:(NSInteger)type response:(NSString*)response;

@end
