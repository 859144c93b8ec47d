#pragma once

#import <Foundation/Foundation.h>

// What GNUstep's notification centre does to its alerts.
@interface NSUserNotification (Desktop)

// What was set, as property list values; nothing that happened to the alert.
- (NSDictionary*)ts_propertyList;
- (instancetype)initWithTs_propertyList:(NSDictionary*)propertyList;

- (void)ts_setDelivered:(BOOL)isPresented;
- (void)ts_setActivationType:(NSUserNotificationActivationType)type response:(NSString*)response;

@end
