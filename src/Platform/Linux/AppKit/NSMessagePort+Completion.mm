#import <Foundation/Foundation.h>
#include <poll.h>

#include <cstdint>

#include "Platform/Linux/AppKit/ReplacedMethod.h"

namespace {

using Receive = void (*)(id, SEL, void*, RunLoopEventType, void*, NSString*);
tessaro::platform::ReplacedMethod<Receive> gnustepReceive;

bool HasInput(void* descriptor) {
  pollfd input{static_cast<int>(reinterpret_cast<std::intptr_t>(descriptor)), POLLIN, 0};
  return poll(&input, 1, 0) > 0;
}

void ReceiveEvent(id self, SEL selector, void* data, RunLoopEventType type, void* descriptor, NSString* mode) {
  const bool isInput = type == ET_RPORT || type == ET_RDESC;
  if (!isInput || HasInput(descriptor)) gnustepReceive(self, selector, data, type, descriptor, mode);
}

}  // namespace

// GNUstep accepts connections with a call that blocks. A nested run loop may have accepted the connection that the
// outer one has seen: the outer one, and with it the application, would wait for another process to connect.
@interface NSMessagePort (Completion)
@end

@implementation NSMessagePort (Completion)

// Without a message to the class, which would initialise it before there is an autorelease pool.
+ (void)load {
  gnustepReceive.With(self, "receivedEvent:type:extra:forMode:", ReceiveEvent);
}

@end
