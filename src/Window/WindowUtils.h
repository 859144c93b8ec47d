#pragma once

#import <AppKit/NSView.h>
#import <AppKit/NSWindow.h>

#include "Base/Ref.h"

@class NSColor;
@class NSNotification;

// Main thread only.

// The window of this application for a handle's reference to a window or a view. nil when the window is gone.
//
// `reference` may be any value: it is compared with living objects, never followed.
[[nodiscard]] NSWindow* TsLivingWindow(const void* reference);

// Adds the window delegate methods that the host's delegate class lacks.
void TsInstallDelegateMethods();

// Starts reporting the windows' notifications to script.
void TsListenForWindowNotifications();

// Whether this is a window of the host's window class. Others are not reported to script.
[[nodiscard]] bool TsIsBrowserWindow(id window);

// Hides the window's content for a number of milliseconds, and focuses the content afterwards. Keeps the window alive
// until then.
void TsHideWindowContent(NSWindow* window, int milliseconds);

@interface NSWindow (TsResize)

// Resizes the window's content and keeps the window's top edge in place. Visible windows are animated and hidden ones
// are not, whatever `animate` says.
- (void)ts_resizeContent:(NSSize)size animate:(BOOL)animate;

@end

// Reports notifications of browser windows to script, and posts changes of their backing again after five seconds, when
// windows have settled on their new screen.
@interface TsWindowUtils : NSObject

+ (TsWindowUtils*)sharedInstance;

- (void)registerCallbacks;
- (void)windowNotification:(NSNotification*)notification;
- (void)windowDidChangeScreenBacking:(NSNotification*)notification;
// Logs the notification; a diagnostic that is not registered.
- (void)debugNotification:(NSNotification*)notification;

@end

// A view of one colour.
@interface TsOverlayView : NSView {
  Ref<NSColor> _backgroundColor;
}

@property(nonatomic, retain) NSColor* backgroundColor;

@end
