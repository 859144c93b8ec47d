#include "Platform/Services.h"

#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSServicesManager.h>

#include <algorithm>

#include "Utilities/Ref.h"

// NSPerformService() tells every failure by a modal alert, an unknown service included, and would stop script with it.

// What GNUstep's applications answer to.
@protocol ServiceListener
- (void)performService:(NSString*)message
        withPasteboard:(NSPasteboard*)pasteboard
              userData:(NSString*)userData
                 error:(NSString**)error;
@end

namespace tessaro::platform {

namespace {

constexpr NSTimeInterval kDefaultTimeout = 30;
constexpr NSTimeInterval kLongestStart = 10;
constexpr NSTimeInterval kStartStep = 0.05;


bool Fail(const std::string& service, NSString* reason) {
  NSLog(@"The service \"%s\" can't be used: %@", service.c_str(), reason);
  return false;
}

// nil when nobody offers it.
NSDictionary* Declaration(NSString* service) {
  // Services are known for the types only that the application has said to work with.
  NSArray* types = @[ NSStringPboardType ];
  [NSApp registerServicesMenuSendTypes:types returnTypes:types];
  GSServicesManager* manager = [GSServicesManager manager];
  [manager loadServices];
  return [[manager menuServices] objectForKey:service];
}

NSTimeInterval Timeout(NSDictionary* declaration) {
  const double milliseconds = [[declaration objectForKey:@"NSTimeout"] doubleValue];
  return milliseconds > 0 ? milliseconds / 1000 : kDefaultTimeout;
}

NSDistantObject* Running(NSString* port) {
  return [NSConnection rootProxyForConnectionWithRegisteredName:port host:@""];
}

NSDistantObject* Started(NSString* port, NSString* application, NSTimeInterval timeout) {
  if (![[NSWorkspace sharedWorkspace] launchApplication:application]) return nil;
  NSDate* deadline = [NSDate dateWithTimeIntervalSinceNow:std::min(timeout, kLongestStart)];
  while ([deadline timeIntervalSinceNow] > 0) {
    [NSThread sleepForTimeInterval:kStartStep];
    if (NSDistantObject* listener = Running(port)) return listener;
  }
  return nil;
}

NSString* Application(NSDictionary* declaration) {
  NSString* path = [declaration objectForKey:@"ServicePath"];
  return path != nil ? path : [declaration objectForKey:@"NSPortName"];
}

bool Perform(const std::string& service, NSString* pasteboard) {
  NSDictionary* declaration = Declaration([NSString stringWithUTF8String:service.c_str()]);
  if (declaration == nil) return Fail(service, @"no application offers it");
  NSString* port = [declaration objectForKey:@"NSPortName"];
  const NSTimeInterval timeout = Timeout(declaration);
  NSDistantObject* listener = Running(port);
  if (listener == nil) listener = Started(port, Application(declaration), timeout);
  if (listener == nil) return Fail(service, [NSString stringWithFormat:@"%@ does not answer", port]);
  NSConnection* connection = [listener connectionForProxy];
  [connection setRequestTimeout:timeout];
  [connection setReplyTimeout:timeout];
  [listener setProtocolForProxy:@protocol(ServiceListener)];
  NSString* error = nil;
  [static_cast<id<ServiceListener>>(listener) performService:[declaration objectForKey:@"NSMessage"]
                                              withPasteboard:[NSPasteboard pasteboardWithName:pasteboard]
                                                    userData:[declaration objectForKey:@"NSUserData"]
                                                       error:&error];
  return [error length] == 0 || Fail(service, error);
}

}  // namespace

bool PerformService(const std::string& service, const std::string& pasteboard) {
  if (NSApp == nil) return Fail(service, @"this process is no application");
  @try {
    return Perform(service, [NSString stringWithUTF8String:pasteboard.c_str()]);
  } @catch (NSException* exception) {
    return Fail(service, [exception reason]);
  }
}

}  // namespace tessaro::platform
