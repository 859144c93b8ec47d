#pragma once

#include <Foundation/Foundation.h>

#define APPKIT_EXTERN extern "C"
@class NSApplication, NSBitmapImageRep, NSButton, NSColor, NSControl, NSEvent, NSFont, NSGraphicsContext, NSImage,
    NSImageRep;
@class NSMenu, NSMenuItem, NSPasteboard, NSPasteboardItem, NSResponder, NSScreen, NSStatusBarButton, NSText;
@class NSTextContainer, NSToolbar, NSToolbarItem, NSView, NSWindow, NSViewController, NSAppearance, NSTrackingArea;
