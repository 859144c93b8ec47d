#pragma once

#import <AppKit/NSLayoutConstraint.h>
#import <AppKit/NSTitlebarAccessoryViewController.h>
#import <AppKit/NSWindow.h>

// GNUstep never posts this notification.
extern "C" NSString* const NSWindowDidChangeBackingPropertiesNotification;

// GNUstep does not call these methods.
@interface NSViewController (Appearance)

- (void)viewDidAppear;
- (void)viewDidDisappear;

@end

@interface NSTitlebarAccessoryViewController (Layout)

// Ignored: accessories stand at the right end.
- (NSLayoutAttribute)layoutAttribute;
- (void)setLayoutAttribute:(NSLayoutAttribute)attribute;

@end

@interface NSWindow (Completion)

// GNUstep attaches one sheet at most.
- (NSArray*)sheets;

// GNUstep's windows have no tabs. The flag is only stored.
+ (BOOL)allowsAutomaticWindowTabbing;
+ (void)setAllowsAutomaticWindowTabbing:(BOOL)allows;

// The window manager draws the title bars here, so accessories stand in the row below: at the end of the toolbar, and
// over the upper right corner of the content while the window shows no toolbar.
- (NSArray*)titlebarAccessoryViewControllers;
- (void)addTitlebarAccessoryViewController:(NSTitlebarAccessoryViewController*)controller;

@end
