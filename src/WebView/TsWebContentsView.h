#pragma once

#import <AppKit/NSDragging.h>

@class NSArray;
@class NSEvent;
@class NSPasteboard;
@class NSString;
@class NSView;
@class NSWindow;

// Main thread only.

// Installs the drag-and-drop bridge in the host's web contents view: each phase of a drag of files is reported to
// script before the view handles it. The view's own methods stay reachable with a trailing underscore.
void TsInstallWebContentsViewPatch();

// Reports a phase of a drag to script. Drags of anything but files are not reported.
void CallCallback(NSString* eventName, id<NSDraggingInfo> info);

// The window's web contents view: the one that has or contains the focus, or else the first one. nil for none.
[[nodiscard]] NSView* FindWebViewDropTarget(NSWindow* window);

// Drops files on the page as if the user had dragged them there; overwrites the system's drag pasteboard. The point is
// in the window's coordinates. Returns the page's answer; false without a page.
bool DropFiles(NSWindow* window, NSPoint point, NSArray* paths);

// Logs the contents of a pasteboard, for developers.
void PrintPasteboard(NSString* label, NSPasteboard* pasteboard);

// Whether the drag of a window's title may start: puts the current page's address (with Option held its address on the
// web) and title on the pasteboard. False when either is missing.
BOOL shouldDragDocumentWithEventMethod(id delegate, SEL selector, NSWindow* window, NSEvent* event, NSPoint point,
                                       NSPasteboard* pasteboard);
