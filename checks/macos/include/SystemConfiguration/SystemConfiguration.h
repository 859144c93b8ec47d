#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>
#include <sys/socket.h>

typedef const struct __SCNetworkReachability* SCNetworkReachabilityRef;
using SCNetworkReachabilityFlags = uint32_t;
struct SCNetworkReachabilityContext {
  CFIndex version;
  void* info;
  const void* (*retain)(const void* info);
  void (*release)(const void* info);
  CFStringRef (*copyDescription)(const void* info);
};
using SCNetworkReachabilityCallBack = void (*)(SCNetworkReachabilityRef target, SCNetworkReachabilityFlags flags,
                                               void* info);

#define CHECK_OLD_REACHABILITY API_DEPRECATED("", macos(10.3, 14.4))
extern "C" {
SCNetworkReachabilityRef SCNetworkReachabilityCreateWithName(CFAllocatorRef allocator,
                                                             const char* name) CHECK_OLD_REACHABILITY;
SCNetworkReachabilityRef SCNetworkReachabilityCreateWithAddress(CFAllocatorRef allocator,
                                                                const struct sockaddr* address) CHECK_OLD_REACHABILITY;
Boolean SCNetworkReachabilityGetFlags(SCNetworkReachabilityRef target,
                                      SCNetworkReachabilityFlags* flags) CHECK_OLD_REACHABILITY;
Boolean SCNetworkReachabilitySetCallback(SCNetworkReachabilityRef target, SCNetworkReachabilityCallBack callback,
                                         SCNetworkReachabilityContext* context) CHECK_OLD_REACHABILITY;
Boolean SCNetworkReachabilitySetDispatchQueue(SCNetworkReachabilityRef target,
                                              dispatch_queue_t queue) CHECK_OLD_REACHABILITY;
}
