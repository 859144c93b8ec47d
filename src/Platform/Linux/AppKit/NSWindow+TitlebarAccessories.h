#pragma once

#import <AppKit/NSLayoutConstraint.h>
#import <AppKit/NSTitlebarAccessoryViewController.h>
#import <AppKit/NSWindow.h>

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

// The window manager draws the title bars here, so accessories stand in the row below: at the end of the toolbar, and
// over the upper right corner of the content while the window shows no toolbar.
@interface NSWindow (TitlebarAccessories)

- (NSArray*)titlebarAccessoryViewControllers;
- (void)addTitlebarAccessoryViewController:(NSTitlebarAccessoryViewController*)controller;

@end
