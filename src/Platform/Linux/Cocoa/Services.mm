#include "Platform/Services.h"

#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSServicesManager.h>
#import <objc/message.h>

#include <algorithm>

#include "Utilities/Ref.h"

// NSPerformService() tells every failure by a modal alert, an unknown service included, and would stop script with it.

namespace tessaro::platform {

namespace {

constexpr NSTimeInterval kDefaultTimeout = 30;
constexpr NSTimeInterval kLongestStart = 10;
constexpr NSTimeInterval kStartStep = 0.05;


using Failure = std::optional<std::string>;

Failure Because(NSString* reason) { return std::string(reason != nil ? [reason UTF8String] : "it says no more"); }

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

// Applications listen for the messages of their services themselves.
void SendService(id listener, NSString* message, NSPasteboard* pasteboard, NSString* userData, NSString** error) {
  using Send = void (*)(id, SEL, NSPasteboard*, NSString*, NSString**);
  const SEL selector = NSSelectorFromString([message stringByAppendingString:@":userData:error:"]);
  reinterpret_cast<Send>(objc_msg_lookup(listener, selector))(listener, selector, pasteboard, userData, error);
}

Failure Perform(const std::string& service, NSString* pasteboard) {
  NSDictionary* declaration = Declaration([NSString stringWithUTF8String:service.c_str()]);
  if (declaration == nil) return Because(@"no application offers it");
  NSString* port = [declaration objectForKey:@"NSPortName"];
  const NSTimeInterval timeout = Timeout(declaration);
  NSDistantObject* listener = Running(port);
  if (listener == nil) listener = Started(port, Application(declaration), timeout);
  if (listener == nil) return Because([NSString stringWithFormat:@"%@ does not answer", port]);
  NSConnection* connection = [listener connectionForProxy];
  [connection setRequestTimeout:timeout];
  [connection setReplyTimeout:timeout];
  NSString* error = nil;
  SendService(listener, [declaration objectForKey:@"NSMessage"], [NSPasteboard pasteboardWithName:pasteboard],
              [declaration objectForKey:@"NSUserData"], &error);
  if ([error length] > 0) return Because(error);
  return std::nullopt;
}

}  // namespace

Failure PerformService(const std::string& service, const std::string& pasteboard) {
  if (NSApp == nil) return Because(@"this process is no application");
  @try {
    return Perform(service, [NSString stringWithUTF8String:pasteboard.c_str()]);
  } @catch (NSException* exception) {
    return Because([exception reason]);
  }
}

}  // namespace tessaro::platform
