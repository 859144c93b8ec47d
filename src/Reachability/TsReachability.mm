#include "Reachability/TsReachability.h"

#include <utility>

#include "Base/Lifetime.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/MainQueue.h"
#include "Utilities/TsNotificationObserver.h"

namespace platform = tessaro::platform;

using platform::ReachabilityFlags;

NSString* const kTsReachabilityChangedNotification = @"kTsReachabilityChangedNotification";

namespace {

constexpr platform::IPAddress kInternet = {platform::IPAddress::Family::V4, {}};
constexpr platform::IPAddress kLocalWiFi = {platform::IPAddress::Family::V4, {169, 254, 0, 0}};

// A connection that would have to be dialled first.
constexpr ReachabilityFlags kOnlyWhenConnected = platform::kConnectionRequired | platform::kTransientConnection;
constexpr ReachabilityFlags kConnectsByItself = platform::kConnectionOnTraffic | platform::kConnectionOnDemand;

NSString* DescribeFlags(ReachabilityFlags flags) {
  const auto letter = [flags](ReachabilityFlags flag, char set) { return (flags & flag) != 0 ? set : '-'; };
  return [NSString
      stringWithFormat:@"%c%c %c%c%c%c%c%c%c", 'X', letter(platform::kReachable, 'R'),
                       letter(platform::kConnectionRequired, 'c'), letter(platform::kTransientConnection, 't'),
                       letter(platform::kInterventionRequired, 'i'), letter(platform::kConnectionOnTraffic, 'C'),
                       letter(platform::kConnectionOnDemand, 'D'), letter(platform::kIsLocalAddress, 'l'),
                       letter(platform::kIsDirect, 'd')];
}

}  // namespace

@interface TsReachability ()
- (void)reachabilityChanged:(ReachabilityFlags)flags;
@end

@implementation TsReachability

@synthesize reachableBlock = _reachableBlock;
@synthesize unreachableBlock = _unreachableBlock;
@synthesize reachabilityBlock = _reachabilityBlock;
@synthesize reachableOnWWAN = _reachableOnWWAN;

+ (instancetype)reachabilityWithHostname:(NSString*)hostname {
  return [[[self alloc] initWithReachabilityRef:platform::NetworkReachability::WithName(TsStdString(hostname))]
      autorelease];
}

+ (instancetype)reachabilityWithHostName:(NSString*)hostname {
  return [self reachabilityWithHostname:hostname];
}

+ (instancetype)reachabilityWithAddress:(const platform::IPAddress&)address {
  return [[[self alloc] initWithReachabilityRef:platform::NetworkReachability::WithAddress(address)] autorelease];
}

+ (instancetype)reachabilityForInternetConnection {
  return [self reachabilityWithAddress:kInternet];
}

+ (instancetype)reachabilityForLocalWiFi {
  return [self reachabilityWithAddress:kLocalWiFi];
}

- (instancetype)initWithReachabilityRef:(std::shared_ptr<platform::NetworkReachability>)ref {
  self = [super init];
  if (self == nil) return nil;
  if (!ref) {
    [self release];
    return nil;
  }
  _reachabilityRef = std::move(ref);
  _reachabilitySerialQueue = std::make_shared<platform::SerialQueue>();
  _reachableOnWWAN = YES;
  return self;
}

- (void)dealloc {
  [self stopNotifier];
  [super dealloc];
}

- (BOOL)startNotifier {
  if (_reachabilityObject) return YES;
  // A queued change may run after the notifier is stopped, so it has a reference of its own.
  const bool isWatching = _reachabilityRef->Watch(
      _reachabilitySerialQueue,
      [monitor = Retain(self)](ReachabilityFlags flags) { [monitor reachabilityChanged:flags]; });
  if (isWatching) _reachabilityObject = Retain(self);
  return isWatching;
}

- (void)stopNotifier {
  if (_reachabilityRef) _reachabilityRef->Unwatch();
  _reachabilityObject = nullptr;
}

- (void)reachabilityChanged:(ReachabilityFlags)flags {
  if ([self isReachableWithFlags:flags]) {
    TsLogInfo(@"reachabilityChanged - reachable");
    if (_reachableBlock) _reachableBlock(self);
  } else {
    TsLogInfo(@"reachabilityChanged - not reachable");
    if (_unreachableBlock) _unreachableBlock(self);
  }
  if (_reachabilityBlock) _reachabilityBlock(self);
  platform::MainQueue::Shared().Post([monitor = Retain(self)] { TsPost(kTsReachabilityChangedNotification, monitor); });
}

- (BOOL)isReachable {
  return [self isReachableWithFlags:[self reachabilityFlags]];
}

- (BOOL)isConnected {
  return [self isReachable];
}

- (BOOL)isReachableViaWWAN {
  return NO;
}

- (BOOL)isReachableViaWiFi {
  return ([self reachabilityFlags] & platform::kReachable) != 0;
}

- (BOOL)isConnectionRequired {
  return [self connectionRequired];
}

- (BOOL)connectionRequired {
  return ([self reachabilityFlags] & platform::kConnectionRequired) != 0;
}

- (BOOL)isConnectionOnDemand {
  const ReachabilityFlags flags = [self reachabilityFlags];
  return (flags & platform::kConnectionRequired) != 0 && (flags & kConnectsByItself) != 0;
}

- (BOOL)isInterventionRequired {
  const ReachabilityFlags flags = [self reachabilityFlags];
  return (flags & platform::kConnectionRequired) != 0 && (flags & platform::kInterventionRequired) != 0;
}

- (BOOL)isReachableWithFlags:(ReachabilityFlags)flags {
  return (flags & platform::kReachable) != 0 && (flags & kOnlyWhenConnected) != kOnlyWhenConnected;
}

- (TsNetworkStatus)currentReachabilityStatus {
  // The kind of network is unknown here: every reachable target counts as one by WiFi.
  return [self isReachable] ? TsReachableViaWiFi : TsNotReachable;
}

- (ReachabilityFlags)reachabilityFlags {
  return _reachabilityRef->Flags().value_or(0);
}

- (NSString*)currentReachabilityString {
  switch ([self currentReachabilityStatus]) {
    case TsReachableViaWWAN:
      return NSLocalizedString(@"Cellular", @"");
    case TsReachableViaWiFi:
      return NSLocalizedString(@"WiFi", @"");
    case TsNotReachable:
      return NSLocalizedString(@"No Connection", @"");
  }
}

- (NSString*)currentReachabilityFlags {
  return DescribeFlags([self reachabilityFlags]);
}

- (NSString*)description {
  return [NSString stringWithFormat:@"<%@: (%@)>", [self class], [self currentReachabilityFlags]];
}

@end

namespace {

Ref<TsReachability>& InternetMonitor() {
  static Forever<Ref<TsReachability>> monitor;
  return *monitor;
}

}  // namespace

void TsStartReachabilityMonitoring(std::function<void()> changed) {
  if (InternetMonitor()) return;
  InternetMonitor() = Retain([TsReachability reachabilityForInternetConnection]);
  [InternetMonitor() setReachabilityBlock:[changed = std::move(changed)](TsReachability*) { changed(); }];
  [InternetMonitor() startNotifier];
}

bool TsIsNetworkReachable() { return [InternetMonitor() isConnected]; }
