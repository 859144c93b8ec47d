#import "native/AtomApplication.h"

#import <AppKit/AppKit.h>
#include <uv.h>

static const NSUInteger kMostKeyArrivals = 512;

static NSString* OrEmpty(NSString* text) { return text != nil ? text : @""; }

@implementation AtomApplication

- (instancetype)init {
  self = [super init];
  if (self) _keyArrivals = Adopt([[NSMutableArray alloc] init]);
  return self;
}

- (NSArray*)keyArrivals {
  return [NSArray arrayWithArray:_keyArrivals];
}

- (void)sendEvent:(NSEvent*)event {
  if ([event type] == NSKeyDown) [self noteKeyArrival:event];
  [super sendEvent:event];
}

- (void)noteKeyArrival:(NSEvent*)event {
  if ([_keyArrivals count] == kMostKeyArrivals) [_keyArrivals removeObjectAtIndex:0];
  [_keyArrivals addObject:@{
    @"characters" : OrEmpty([event characters]),
    @"keyCode" : @([event keyCode]),
    @"modifiers" : @([event modifierFlags]),
    @"arrival" : @(static_cast<double>(uv_hrtime())),
    @"serverTime" : @([event timestamp] * 1000),
  }];
}

@end
