#include "Platform/Services.h"

#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSServicesManager.h>
#import <objc/message.h>

#include <algorithm>

#include "Base/Ref.h"

// NSPerformService() tells every failure by a modal alert, an unknown service included, and would stop script with it.

namespace tessaro::platform {

namespace {

constexpr NSTimeInterval kDefaultTimeout = 30;
constexpr NSTimeInterval kLongestStart = 10;
constexpr NSTimeInterval kStartStep = 0.05;

using Failure = std::optional<std::string>;

Failure Because(NSString* reason) { return std::string(reason != nil ? [reason UTF8String] : "it says no more"); }

// nil when nobody offers it.
NSDictionary* Declaration(NSString* service, NSArray* types) {
  // Services are known for the types only that the application has said to work with.
  [NSApp registerServicesMenuSendTypes:types returnTypes:types];
  GSServicesManager* manager = [GSServicesManager manager];
  [manager loadServices];
  return [[manager menuServices] objectForKey:service];
}

NSTimeInterval Timeout(NSDictionary* declaration) {
  const double milliseconds = [[declaration objectForKey:@"NSTimeout"] doubleValue];
  return milliseconds > 0 ? milliseconds / 1000 : kDefaultTimeout;
}

// Applications listen for the messages of their services themselves.
SEL Message(NSDictionary* declaration) {
  return NSSelectorFromString([[declaration objectForKey:@"NSMessage"] stringByAppendingString:@":userData:error:"]);
}

// nil while the application is not there, or does not offer its services yet.
NSDistantObject* Listener(NSDictionary* declaration) {
  NSDistantObject* listener =
      [NSConnection rootProxyForConnectionWithRegisteredName:[declaration objectForKey:@"NSPortName"] host:@""];
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

Failure Perform(NSString* service, NSPasteboard* pasteboard) {
  NSDictionary* declaration = Declaration(service, [NSArray arrayWithArray:[pasteboard types]]);
  if (declaration == nil) return Because(@"no application offers it");
  NSDistantObject* listener = Listener(declaration);
  if (listener == nil) listener = ListenerOnceStarted(declaration);
  if (listener == nil) {
    return Because([[declaration objectForKey:@"NSPortName"] stringByAppendingString:@" does not answer"]);
  }
  NSConnection* connection = [listener connectionForProxy];
  [connection setRequestTimeout:Timeout(declaration)];
  [connection setReplyTimeout:Timeout(declaration)];

  using Send = void (*)(id, SEL, NSPasteboard*, NSString*, NSString**);
  const SEL message = Message(declaration);
  NSString* error = nil;
  reinterpret_cast<Send>(objc_msg_lookup(listener, message))(listener, message, pasteboard,
                                                             [declaration objectForKey:@"NSUserData"], &error);
  if ([error length] > 0) return Because(error);
  return std::nullopt;
}

}  // namespace

Failure PerformService(const std::string& service, const std::string& pasteboard) {
  if (NSApp == nil) return Because(@"this process is no application");
  @try {
    return Perform([NSString stringWithUTF8String:service.c_str()],
                   [NSPasteboard pasteboardWithName:[NSString stringWithUTF8String:pasteboard.c_str()]]);
  } @catch (NSException* exception) {
    return Because([exception reason]);
  }
}

}  // namespace tessaro::platform
