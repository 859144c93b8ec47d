#import "Platform/Linux/Scripting/SBApplication.h"

#import <Foundation/Foundation.h>

#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Platform/Applications.h"
#include "Platform/Linux/Scripting/RootProxy.h"

static constexpr NSTimeInterval kAnswerDeadline = 10;
static constexpr NSTimeInterval kLaunchDeadline = 10;
static constexpr NSTimeInterval kLaunchPoll = 0.05;

static Ref<NSDistantObject> Connect(NSString* identifier) {
  @try {
    return Retain(tessaro::platform::RootProxy(identifier, kAnswerDeadline));
  } @catch (NSException* exception) {
    TsLogWarning(@"%@ can't be reached: %@", identifier, [exception reason]);
  }
  return nullptr;
}

@implementation SBApplication

+ (instancetype)applicationWithBundleIdentifier:(NSString*)identifier {
  if (identifier == nil || !tessaro::platform::FindApplication([identifier UTF8String])) return nil;
  SBApplication* application = Adopt([[self alloc] init]).Autoreleased();
  application->_identifier = Retain(identifier);
  return application;
}

- (void)dealloc {
  [[_remote connectionForProxy] invalidate];
  [super dealloc];
}

- (BOOL)isRunning {
  if (!_remote) _remote = Connect(_identifier);
  return _remote.get() != nil;
}

- (NSDistantObject*)remote {
  if ([self isRunning] || !tessaro::platform::LaunchApplication([_identifier UTF8String])) return _remote;
  NSDate* end = [NSDate dateWithTimeIntervalSinceNow:kLaunchDeadline];
  while (![self isRunning] && [end timeIntervalSinceNow] > 0) [NSThread sleepForTimeInterval:kLaunchPoll];
  if (!_remote) TsLogWarning(@"%@ has no scripting interface", _identifier.get());
  return _remote;
}

- (void)activate {
  @try {
    if ([[self remote] respondsToSelector:_cmd]) [static_cast<SBApplication*>(static_cast<id>([self remote])) activate];
  } @catch (NSException* exception) {
    TsLogWarning(@"%@ can't be activated: %@", _identifier.get(), [exception reason]);
  }
}

- (BOOL)respondsToSelector:(SEL)selector {
  if ([super respondsToSelector:selector]) return YES;
  @try {
    return [[self remote] respondsToSelector:selector];
  } @catch (NSException* exception) {
    return NO;
  }
}

- (NSMethodSignature*)methodSignatureForSelector:(SEL)selector {
  NSMethodSignature* own = [super methodSignatureForSelector:selector];
  if (own != nil) return own;
  @try {
    return [[self remote] methodSignatureForSelector:selector];
  } @catch (NSException* exception) {
    return nil;
  }
}

- (void)forwardInvocation:(NSInvocation*)invocation {
  @try {
    [invocation invokeWithTarget:[self remote]];
  } @catch (NSException* exception) {
    TsLogWarning(@"%@ doesn't answer %@: %@", _identifier.get(), NSStringFromSelector([invocation selector]),
                 [exception reason]);
  }
}

@end
