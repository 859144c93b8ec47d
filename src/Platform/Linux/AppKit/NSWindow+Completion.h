#pragma once

#import <AppKit/NSLayoutConstraint.h>
#import <AppKit/NSTitlebarAccessoryViewController.h>
#import <AppKit/NSWindow.h>

// GNUstep doesn't announce that a window has moved to a screen of another resolution.
extern "C" NSString* const NSWindowDidChangeBackingPropertiesNotification;

// GNUstep tells view controllers nothing about their views.
@interface NSViewController (Appearance)

- (void)viewDidAppear;
- (void)viewDidDisappear;

@end

@interface NSTitlebarAccessoryViewController (Layout)

// Accessories stand at the right end, whatever this says.
- (NSLayoutAttribute)layoutAttribute;
- (void)setLayoutAttribute:(NSLayoutAttribute)attribute;

@end

@interface NSWindow (Completion)

// GNUstep attaches one sheet at most.
- (NSArray*)sheets;

// GNUstep's windows have no tabs. The value is only kept.
+ (BOOL)allowsAutomaticWindowTabbing;
+ (void)setAllowsAutomaticWindowTabbing:(BOOL)allows;

// The window manager draws the title bars here, so accessories stand in the row below: at the end of the toolbar, and
// over the upper right corner of the content while the window shows no toolbar.
- (NSArray*)titlebarAccessoryViewControllers;
- (void)addTitlebarAccessoryViewController:(NSTitlebarAccessoryViewController*)controller;

@end
