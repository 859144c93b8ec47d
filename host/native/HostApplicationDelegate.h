#pragma once

#import <AppKit/NSApplication.h>

class ScriptEvents;

// Turns what the user asks of the application into events for script: "command" for a chosen menu item, "page-key" for
// a shortcut that the page gets, "quit".
@interface HostApplicationDelegate : NSObject <NSApplicationDelegate> {
  const ScriptEvents* _events;
}

// `events` must outlive the delegate.
- (instancetype)initWithEvents:(const ScriptEvents*)events;

// Action of the menu items that carry a "commandId".
- (void)performCommand:(id)sender;

- (void)webContentsReceivedKeyEquivalent:(NSEvent*)event use:(BOOL)isUsed;

@end
