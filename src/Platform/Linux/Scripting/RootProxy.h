#pragma once

#import <Foundation/NSConnection.h>
#import <Foundation/NSDistantObject.h>

namespace tessaro::platform {

// The object that an application publishes; nil for none. The lookup and all messages to the object raise after
// `timeout` seconds: Foundation's default waits five minutes for an application that hangs.
[[nodiscard]] inline NSDistantObject* RootProxy(NSString* name, NSTimeInterval timeout) {
  NSConnection* connection = [NSConnection connectionWithRegisteredName:name host:nil];
  [connection setRequestTimeout:timeout];
  [connection setReplyTimeout:timeout];
  return [connection rootProxy];
}

}  // namespace tessaro::platform
