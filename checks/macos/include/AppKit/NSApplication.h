#pragma once

#include <AppKit/NSResponder.h>

APPKIT_EXTERN NSNotificationName const NSApplicationDidBecomeActiveNotification;
APPKIT_EXTERN NSNotificationName const NSApplicationDidResignActiveNotification;
APPKIT_EXTERN NSNotificationName const NSApplicationWillTerminateNotification;
APPKIT_EXTERN NSNotificationName const NSApplicationDidChangeScreenParametersNotification;

using NSModalResponse = NSInteger;
static const NSModalResponse NSModalResponseOK = 1;
static const NSModalResponse NSModalResponseCancel = 0;

@protocol NSApplicationDelegate <NSObject>
@optional
- (NSMenu*)applicationDockMenu:(NSApplication*)sender;
- (BOOL)application:(NSApplication*)sender delegateHandlesKey:(NSString*)key;
@end

@interface NSApplication : NSResponder
@property(class, readonly, strong) NSApplication* sharedApplication;
@property(assign) id<NSApplicationDelegate> delegate;
@property(readonly, copy) NSArray* windows;
@property(readonly, assign) NSWindow* keyWindow;
@property(readonly, assign) NSWindow* mainWindow;
@property(readonly, getter=isActive) BOOL active;
@property(readonly, getter=isHidden) BOOL hidden;
@property(readonly, strong) NSEvent* currentEvent;
@property(strong) NSMenu* mainMenu;
@property(strong) NSImage* applicationIconImage;
@property(strong) id servicesProvider;
@property(readonly, strong) NSAppearance* effectiveAppearance API_AVAILABLE(macos(10.14));
- (void)activateIgnoringOtherApps:(BOOL)ignoringOthers API_DEPRECATED("", macos(10.0, 14.0));
- (void)deactivate;
- (void)hide:(id)sender;
- (void)unhide:(id)sender;
- (void)sendEvent:(NSEvent*)event;
- (void)postEvent:(NSEvent*)event atStart:(BOOL)atStart;
- (BOOL)sendAction:(SEL)action to:(id)target from:(id)sender;
- (id)targetForAction:(SEL)action;
- (void)registerServicesMenuSendTypes:(NSArray*)sendTypes returnTypes:(NSArray*)returnTypes;
@end
APPKIT_EXTERN NSApplication* NSApp;
APPKIT_EXTERN void NSUpdateDynamicServices(void);
APPKIT_EXTERN BOOL NSPerformService(NSString* item, NSPasteboard* pasteboard);
APPKIT_EXTERN void NSBeep(void);

using NSAppearanceName = NSString*;
APPKIT_EXTERN NSAppearanceName const NSAppearanceNameAqua;
APPKIT_EXTERN NSAppearanceName const NSAppearanceNameDarkAqua API_AVAILABLE(macos(10.14));
@interface NSAppearance : NSObject
- (NSAppearanceName)bestMatchFromAppearancesWithNames:(NSArray*)names API_AVAILABLE(macos(10.14));
@end

@interface NSRunningApplication : NSObject
+ (NSArray*)runningApplicationsWithBundleIdentifier:(NSString*)identifier;
@property(readonly, copy) NSString* bundleIdentifier;
@property(readonly, getter=isTerminated) BOOL terminated;
- (BOOL)activateWithOptions:(NSUInteger)options;
@end
