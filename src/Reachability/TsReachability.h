#pragma once

#import <Foundation/Foundation.h>

#include <functional>
#include <memory>

#include "Base/Ref.h"
#include "Platform/NetworkReachability.h"

// Posted on the main queue after each change, with the monitor as its object.
extern NSString* const kTsReachabilityChangedNotification;

// The values of currentReachabilityStatus.
typedef NS_ENUM(NSInteger, TsNetworkStatus) {
  TsNotReachable = 0,
  TsReachableViaWWAN = 1,
  TsReachableViaWiFi = 2,
};

@class TsReachability;

using TsReachabilityBlock = std::function<void(TsReachability* monitor)>;

// Watches whether this machine has a route to a target.
//
// Create, start, stop and release on the main thread; queries work on any thread. When the flags can't be read, every
// query is NO or 0.
@interface TsReachability : NSObject {
 @private
  std::shared_ptr<tessaro::platform::NetworkReachability> _reachabilityRef;
  std::shared_ptr<tessaro::platform::SerialQueue> _reachabilitySerialQueue;
  Ref<TsReachability> _reachabilityObject;
  TsReachabilityBlock _reachableBlock;
  TsReachabilityBlock _unreachableBlock;
  TsReachabilityBlock _reachabilityBlock;
  BOOL _reachableOnWWAN;
}

// nil when the system can't make the target.
+ (instancetype)reachabilityWithHostname:(NSString*)hostname;
+ (instancetype)reachabilityWithHostName:(NSString*)hostname;
+ (instancetype)reachabilityWithAddress:(const tessaro::platform::IPAddress&)address;
+ (instancetype)reachabilityForInternetConnection;
+ (instancetype)reachabilityForLocalWiFi;
- (instancetype)initWithReachabilityRef:(std::shared_ptr<tessaro::platform::NetworkReachability>)ref;

// Called on the monitor's own serial queue. Set them before the notifier starts.
@property(nonatomic) TsReachabilityBlock reachableBlock;
@property(nonatomic) TsReachabilityBlock unreachableBlock;
@property(nonatomic) TsReachabilityBlock reachabilityBlock;

// YES at first; not used.
@property(nonatomic, assign) BOOL reachableOnWWAN;

// The monitor stays alive while its notifier runs. NO when the system reports no changes.
- (BOOL)startNotifier;
- (void)stopNotifier;

- (BOOL)isReachable;
- (BOOL)isConnected;
- (BOOL)isReachableViaWWAN;
- (BOOL)isReachableViaWiFi;
- (BOOL)isConnectionRequired;
- (BOOL)connectionRequired;
- (BOOL)isConnectionOnDemand;
- (BOOL)isInterventionRequired;
- (BOOL)isReachableWithFlags:(tessaro::platform::ReachabilityFlags)flags;
- (TsNetworkStatus)currentReachabilityStatus;
- (tessaro::platform::ReachabilityFlags)reachabilityFlags;
- (NSString*)currentReachabilityString;
- (NSString*)currentReachabilityFlags;

@end

// Watches the internet connection for the life of the process, from the first call on. `changed` is called at each
// change, on another thread; it must not throw.
void TsStartReachabilityMonitoring(std::function<void()> changed);

// The state of the internet connection now. False before the monitoring has begun.
[[nodiscard]] bool TsIsNetworkReachable();
