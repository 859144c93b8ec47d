#pragma once

#include <AppKit/NSMenu.h>

using NSControlStateValue = NSInteger;
static const NSControlStateValue NSControlStateValueOff = 0;
static const NSControlStateValue NSControlStateValueOn = 1;
static const NSControlStateValue NSOffState API_DEPRECATED("", macos(10.0, 10.14)) = 0;
static const NSControlStateValue NSOnState API_DEPRECATED("", macos(10.0, 10.14)) = 1;

@interface NSMenuItem : NSObject <NSCopying>
+ (NSMenuItem*)separatorItem;
- (instancetype)initWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)key;
@property(assign) NSMenu* menu;
@property(readonly) BOOL hasSubmenu;
@property(strong) NSMenu* submenu;
@property(copy) NSString* title;
@property(copy) NSAttributedString* attributedTitle;
@property(readonly, getter=isSeparatorItem) BOOL separatorItem;
@property(copy) NSString* keyEquivalent;
@property NSEventModifierFlags keyEquivalentModifierMask;
@property(strong) NSImage* image;
@property NSControlStateValue state;
@property(getter=isEnabled) BOOL enabled;
@property(getter=isHidden) BOOL hidden;
@property(getter=isAlternate) BOOL alternate;
@property(assign) id target;
@property SEL action;
@property NSInteger tag;
@property(strong) id representedObject;
@property(copy) NSString* toolTip;
@property(strong) NSView* view;
@end

@protocol NSValidatedUserInterfaceItem
@property(readonly) SEL action;
@property(readonly) NSInteger tag;
@end
@interface NSObject (NSMenuValidation)
- (BOOL)validateMenuItem:(NSMenuItem*)item;
@end
