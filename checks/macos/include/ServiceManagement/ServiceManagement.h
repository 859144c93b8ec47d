#pragma once

#include <Foundation/Foundation.h>

enum SMAppServiceStatus : NSInteger {
  SMAppServiceStatusNotRegistered = 0,
  SMAppServiceStatusEnabled = 1,
  SMAppServiceStatusRequiresApproval = 2,
};
API_AVAILABLE(macos(13.0))
@interface SMAppService : NSObject
@property(class, readonly, strong) SMAppService* mainAppService;
@property(readonly) SMAppServiceStatus status;
- (BOOL)registerAndReturnError:(NSError**)error;
- (BOOL)unregisterAndReturnError:(NSError**)error;
@end
