#pragma once

#import <AppKit/NSDragging.h>

@class NSArray;
@class NSEvent;
@class NSPasteboard;
@class NSString;
@class NSView;
@class NSWindow;

// Main thread only.

// Puts the drag-and-drop bridge between the host's web contents view and what is dragged over it: script hears of each
// phase of a drag of files before the view does. The view's own methods stay reachable with a trailing underscore.
void TsInstallWebContentsViewPatch();

// Reports a phase of a drag to script. Drags of anything but files are not reported.
void CallCallback(NSString* eventName, id<NSDraggingInfo> info);

// The window's web contents view: the one that has the focus or contains what has it, or else the first one. nil where
// there is none.
[[nodiscard]] NSView* FindWebViewDropTarget(NSWindow* window);

// Drops files on the page as if the user had dragged them there; overwrites the system's drag pasteboard. The point is
// in the window's coordinates. Gives the page's answer, false where there is no page.
bool DropFiles(NSWindow* window, NSPoint point, NSArray* paths);

// Logs what is on a pasteboard, for developers.
void PrintPasteboard(NSString* label, NSPasteboard* pasteboard);

// Answers to the drag of a window's title: puts the current page's address and title on the pasteboard. With Option
// held it is the address for browsers. False, and nothing is dragged, where either is missing.
BOOL shouldDragDocumentWithEventMethod(id delegate, SEL selector, NSWindow* window, NSEvent* event, NSPoint point,
                                       NSPasteboard* pasteboard);
