#include "Platform/Services.h"

#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSServicesManager.h>
#import <objc/message.h>

#include <algorithm>

#include "Base/TsString.h"
#include "Platform/Linux/Scripting/RootProxy.h"

// NSPerformService() reports every failure by a modal alert, which would block script.

namespace tessaro::platform {

namespace {

constexpr NSTimeInterval kDefaultTimeout = 30;
constexpr NSTimeInterval kLongestStart = 10;
constexpr NSTimeInterval kStartStep = 0.05;

auto FailBecause(NSString* reason) { return Fail(reason != nil ? TsStdString(reason) : "it gives no reason"); }

// nil when no application offers the service.
NSDictionary* Declaration(NSString* service, NSArray* types) {
  // The manager only lists services of types that the application has registered.
  [NSApp registerServicesMenuSendTypes:types returnTypes:types];
  GSServicesManager* manager = [GSServicesManager manager];
  [manager loadServices];
  return [[manager menuServices] objectForKey:service];
}

NSTimeInterval Timeout(NSDictionary* declaration) {
  const double milliseconds = [[declaration objectForKey:@"NSTimeout"] doubleValue];
  return milliseconds > 0 ? milliseconds / 1000 : kDefaultTimeout;
}

SEL Message(NSDictionary* declaration) {
  return NSSelectorFromString([[declaration objectForKey:@"NSMessage"] stringByAppendingString:@":userData:error:"]);
}

// nil while the application is not running or not listening yet.
NSDistantObject* Listener(NSDictionary* declaration) {
  NSDistantObject* listener = RootProxy([declaration objectForKey:@"NSPortName"], Timeout(declaration));
  return [listener methodSignatureForSelector:Message(declaration)] != nil ? listener : nil;
}

NSDistantObject* ListenerOnceStarted(NSDictionary* declaration) {
  NSString* path = [declaration objectForKey:@"ServicePath"];
  NSString* application = path != nil ? path : [declaration objectForKey:@"NSPortName"];
  if (![[NSWorkspace sharedWorkspace] launchApplication:application]) return nil;
  NSDate* deadline = [NSDate dateWithTimeIntervalSinceNow:std::min(Timeout(declaration), kLongestStart)];
  while ([deadline timeIntervalSinceNow] > 0) {
    if (NSDistantObject* listener = Listener(declaration)) return listener;
    [NSThread sleepForTimeInterval:kStartStep];
  }
  return nil;
}

Result<void> Perform(NSString* service, NSPasteboard* pasteboard) {
  NSDictionary* declaration = Declaration(service, [NSArray arrayWithArray:[pasteboard types]]);
  if (declaration == nil) return FailBecause(@"no application offers it");
  NSDistantObject* listener = Listener(declaration);
  if (listener == nil) listener = ListenerOnceStarted(declaration);
  if (listener == nil) {
    return FailBecause([[declaration objectForKey:@"NSPortName"] stringByAppendingString:@" does not answer"]);
  }
  using Send = void (*)(id, SEL, NSPasteboard*, NSString*, NSString**);
  const SEL message = Message(declaration);
  NSString* error = nil;
  reinterpret_cast<Send>(objc_msg_lookup(listener, message))(listener, message, pasteboard,
                                                             [declaration objectForKey:@"NSUserData"], &error);
  if ([error length] > 0) return FailBecause(error);
  return {};
}

}  // namespace

Result<void> PerformService(const std::string& service, const std::string& pasteboard) {
  if (NSApp == nil) return FailBecause(@"this process is no application");
  @try {
    return Perform(TsNSString(service), [NSPasteboard pasteboardWithName:TsNSString(pasteboard)]);
  } @catch (NSException* exception) {
    return FailBecause([exception reason]);
  }
}

}  // namespace tessaro::platform
