#import "native/HostApplicationDelegate.h"

#import <AppKit/AppKit.h>

#include "native/ScriptEvents.h"

@implementation HostApplicationDelegate

- (instancetype)initWithEvents:(const ScriptEvents*)events {
  self = [super init];
  if (self) _events = events;
  return self;
}

- (void)performCommand:(id)sender {
  _events->Emit(@"command", @{
    @"commandId" : [[sender representedObject] objectForKey:@"commandId"],
    @"title" : [sender title],
  });
}

// The process is Node's, so how it ends is script's affair.
- (NSApplicationTerminateReply)applicationShouldTerminate:(NSApplication*)application {
  _events->Emit(@"quit", nil);
  return NSTerminateCancel;
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication*)application {
  return NO;
}

@end
