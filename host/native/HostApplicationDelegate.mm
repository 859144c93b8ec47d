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

- (void)webContentsReceivedKeyEquivalent:(NSEvent*)event use:(BOOL)isUsed {
  NSString* characters = [event charactersIgnoringModifiers];
  _events->Emit(@"page-key", @{
    @"characters" : characters != nil ? characters : @"",
    @"modifiers" : @([event modifierFlags]),
    @"isUsed" : [NSNumber numberWithBool:isUsed],
  });
}

// The process is Node's: script decides how it ends.
- (NSApplicationTerminateReply)applicationShouldTerminate:(NSApplication*)application {
  _events->Emit(@"quit", nil);
  return NSTerminateCancel;
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication*)application {
  return NO;
}

@end
