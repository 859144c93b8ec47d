#import "Notifications/TsUserNotification.h"

@implementation TsUserNotification

+ (instancetype)sharedInstance {
  static TsUserNotification* const instance = [[self alloc] init];
  return instance;
}

@end
