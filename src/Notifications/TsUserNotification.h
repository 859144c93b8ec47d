#pragma once

#import <Foundation/NSObject.h>

// The application's alerts in the notification centre.
@interface TsUserNotification : NSObject

+ (instancetype)sharedInstance;

@end
