#import <AppKit/AppKit.h>

// GNUstep stands in for a missing event with one that was never initialised, and hands it out. The category takes its
// method's place.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"
@implementation NSApplication (CurrentEvent)

- (NSEvent*)currentEvent {
  return static_cast<int>([_current_event type]) == 0 ? nil : _current_event;
}

@end
#pragma clang diagnostic pop
