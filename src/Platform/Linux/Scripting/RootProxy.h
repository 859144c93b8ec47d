#pragma once

#import <Foundation/NSConnection.h>
#import <Foundation/NSDistantObject.h>

namespace tessaro::platform {

// The object that an application publishes, nil when there is none. Messages to it, and the first question for it, time
// out with an exception after so many seconds: Foundation's own way waits five minutes for an application that hangs.
[[nodiscard]] inline NSDistantObject* RootProxy(NSString* name, NSTimeInterval timeout) {
  NSConnection* connection = [NSConnection connectionWithRegisteredName:name host:nil];
  [connection setRequestTimeout:timeout];
  [connection setReplyTimeout:timeout];
  return [connection rootProxy];
}

}  // namespace tessaro::platform
