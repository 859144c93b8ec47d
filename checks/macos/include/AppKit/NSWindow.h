#pragma once

#include <AppKit/NSApplication.h>
#include <AppKit/NSView.h>

APPKIT_EXTERN NSNotificationName const NSWindowDidBecomeKeyNotification;
APPKIT_EXTERN NSNotificationName const NSWindowDidBecomeMainNotification;
APPKIT_EXTERN NSNotificationName const NSWindowDidResignKeyNotification;
APPKIT_EXTERN NSNotificationName const NSWindowDidResignMainNotification;
APPKIT_EXTERN NSNotificationName const NSWindowWillCloseNotification;
APPKIT_EXTERN NSNotificationName const NSWindowDidResizeNotification;
APPKIT_EXTERN NSNotificationName const NSWindowDidChangeBackingPropertiesNotification;

using NSWindowStyleMask = NSUInteger;
enum : NSWindowStyleMask {
  NSWindowStyleMaskBorderless = 0,
  NSWindowStyleMaskTitled = 1,
  NSWindowStyleMaskClosable = 2,
  NSWindowStyleMaskMiniaturizable = 4,
  NSWindowStyleMaskResizable = 8,
  NSWindowStyleMaskUtilityWindow = 16,
  NSWindowStyleMaskNonactivatingPanel = 128,
};
#define CHECK_OLD_STYLE(old, now) static const NSWindowStyleMask old API_DEPRECATED("", macos(10.0, 10.12)) = now
CHECK_OLD_STYLE(NSBorderlessWindowMask, NSWindowStyleMaskBorderless);
CHECK_OLD_STYLE(NSTitledWindowMask, NSWindowStyleMaskTitled);
CHECK_OLD_STYLE(NSClosableWindowMask, NSWindowStyleMaskClosable);
CHECK_OLD_STYLE(NSMiniaturizableWindowMask, NSWindowStyleMaskMiniaturizable);
CHECK_OLD_STYLE(NSResizableWindowMask, NSWindowStyleMaskResizable);

enum NSBackingStoreType : NSUInteger { NSBackingStoreBuffered = 2 };
using NSWindowLevel = NSInteger;
static const NSWindowLevel NSNormalWindowLevel = 0;
static const NSWindowLevel NSFloatingWindowLevel = 3;
static const NSWindowLevel NSStatusWindowLevel = 25;
static const NSWindowLevel NSScreenSaverWindowLevel = 1000;
enum NSWindowTabbingMode : NSInteger { NSWindowTabbingModeAutomatic = 0, NSWindowTabbingModeDisallowed = 2 };
using NSWindowCollectionBehavior = NSUInteger;
enum : NSWindowCollectionBehavior { NSWindowCollectionBehaviorCanJoinAllSpaces = 1 };

@class NSTitlebarAccessoryViewController, NSWindowController;
@protocol NSWindowDelegate <NSObject>
@optional
- (BOOL)windowShouldClose:(NSWindow*)sender;
- (void)windowWillClose:(NSNotification*)notification;
- (void)windowDidResize:(NSNotification*)notification;
- (BOOL)window:(NSWindow*)window
    shouldDragDocumentWithEvent:(NSEvent*)event
                           from:(NSPoint)location
                 withPasteboard:(NSPasteboard*)pasteboard;
- (BOOL)window:(NSWindow*)window shouldPopUpDocumentPathMenu:(NSMenu*)menu;
@end

@interface NSWindow : NSResponder
- (instancetype)initWithContentRect:(NSRect)rect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)defer;
@property(class) BOOL allowsAutomaticWindowTabbing;
@property NSWindowTabbingMode tabbingMode;
@property(assign) id<NSWindowDelegate> delegate;
@property(copy) NSString* title;
@property(copy) NSString* representedFilename;
@property(copy) NSURL* representedURL;
@property(strong) NSView* contentView;
@property(readonly) NSWindowStyleMask styleMask;
@property(readonly) NSRect frame;
@property(readonly) NSInteger windowNumber;
@property(getter=isReleasedWhenClosed) BOOL releasedWhenClosed;
@property(strong) NSColor* backgroundColor;
@property(getter=isOpaque) BOOL opaque;
@property BOOL hasShadow;
@property BOOL hidesOnDeactivate;
@property BOOL ignoresMouseEvents;
@property BOOL acceptsMouseMovedEvents;
@property CGFloat alphaValue;
@property NSWindowLevel level;
@property NSSize minSize;
@property NSSize maxSize;
@property NSSize contentMinSize;
@property NSWindowCollectionBehavior collectionBehavior;
@property(readonly, getter=isVisible) BOOL visible;
@property(readonly, getter=isKeyWindow) BOOL keyWindow;
@property(readonly, getter=isMainWindow) BOOL mainWindow;
@property(readonly) BOOL canBecomeKeyWindow;
@property(readonly) BOOL canBecomeMainWindow;
@property(readonly, getter=isMiniaturized) BOOL miniaturized;
@property(readonly, strong) NSScreen* screen;
@property(readonly) CGFloat backingScaleFactor;
@property(readonly, assign) NSResponder* firstResponder;
@property(readonly, copy) NSArray* sheets;
@property(readonly, strong) NSWindow* attachedSheet;
@property(readonly, copy) NSArray* childWindows;
@property(strong) NSToolbar* toolbar;
@property(copy) NSArray* titlebarAccessoryViewControllers;
- (void)addTitlebarAccessoryViewController:(NSTitlebarAccessoryViewController*)controller;
- (void)toggleToolbarShown:(id)sender;
- (void)runToolbarCustomizationPalette:(id)sender;
- (NSRect)frameRectForContentRect:(NSRect)rect;
- (NSRect)contentRectForFrameRect:(NSRect)rect;
+ (NSRect)frameRectForContentRect:(NSRect)rect styleMask:(NSWindowStyleMask)style;
- (void)setFrame:(NSRect)frame display:(BOOL)display;
- (void)setFrame:(NSRect)frame display:(BOOL)display animate:(BOOL)animate;
- (void)setFrameOrigin:(NSPoint)origin;
- (void)setContentSize:(NSSize)size;
- (NSTimeInterval)animationResizeTime:(NSRect)frame;
- (BOOL)makeFirstResponder:(NSResponder*)responder;
@property(assign) NSView* initialFirstResponder;
- (void)recalculateKeyViewLoop;
- (void)selectKeyViewFollowingView:(NSView*)view;
- (void)selectKeyViewPrecedingView:(NSView*)view;
- (BOOL)setFrameAutosaveName:(NSString*)name;
- (void)makeKeyAndOrderFront:(id)sender;
- (void)makeKeyWindow;
- (void)orderFront:(id)sender;
- (void)orderFrontRegardless;
- (void)orderOut:(id)sender;
- (void)center;
- (void)close;
- (void)performClose:(id)sender;
- (void)miniaturize:(id)sender;
- (void)deminiaturize:(id)sender;
- (void)display;
- (void)sendEvent:(NSEvent*)event;
- (void)setViewsNeedDisplay:(BOOL)needsDisplay;
- (void)beginSheet:(NSWindow*)sheet completionHandler:(void (^)(NSModalResponse code))handler;
- (void)endSheet:(NSWindow*)sheet;
- (NSRect)convertRectToScreen:(NSRect)rect;
- (NSPoint)convertPointToScreen:(NSPoint)point;
@end

@interface NSPanel : NSWindow
@property BOOL becomesKeyOnlyIfNeeded;
@property(getter=isFloatingPanel) BOOL floatingPanel;
@property BOOL worksWhenModal;
@end

@interface NSScreen : NSObject
@property(class, readonly, strong) NSScreen* mainScreen;
@property(class, readonly, copy) NSArray* screens;
@property(readonly) NSRect frame;
@property(readonly) NSRect visibleFrame;
@property(readonly) CGFloat backingScaleFactor;
@property(readonly, copy) NSDictionary* deviceDescription;
@end
