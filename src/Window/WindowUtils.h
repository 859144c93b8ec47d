#pragma once

#import <AppKit/NSView.h>

#include "Base/Ref.h"

@class NSColor;
@class NSNotification;
@class NSWindow;

// Main thread only.

// Adds the window delegate methods that the host's delegate class lacks.
void TsInstallDelegateMethods();

// Starts to report the windows' notifications to script.
void TsListenForWindowNotifications();

// Whether this is a window of the host's window class: script hears of no others.
[[nodiscard]] bool TsIsBrowserWindow(id window);

// Makes the content of the window invisible, and visible and focused again after a number of milliseconds. The window
// is kept alive until then.
void TsHideWindowContent(NSWindow* window, int milliseconds);

// Reports notifications of browser windows to script, and announces changes of their backing a second time, five
// seconds later: windows have settled on their new screen then.
@interface TsWindowUtils : NSObject

+ (TsWindowUtils*)sharedInstance;

- (void)registerCallbacks;
- (void)windowNotification:(NSNotification*)notification;
- (void)windowDidChangeScreenBacking:(NSNotification*)notification;
// Logs what it receives; for developers, who register it themselves.
- (void)debugNotification:(NSNotification*)notification;

@end

// A view of one colour.
@interface TsOverlayView : NSView {
  Ref<NSColor> _backgroundColor;
}

@property(nonatomic, retain) NSColor* backgroundColor;

@end
