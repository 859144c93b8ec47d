#pragma once

#include <AppKit/NSFont.h>
#include <AppKit/NSMenuItem.h>
#include <AppKit/NSView.h>

@interface NSControl : NSView
@property(assign) id target;
@property SEL action;
@property NSInteger tag;
@property(getter=isEnabled) BOOL enabled;
@property BOOL refusesFirstResponder;
@property(strong) NSFont* font;
@property(copy) NSString* stringValue;
@property NSInteger integerValue;
@property NSTextAlignment alignment;
- (void)sizeToFit;
- (BOOL)sendAction:(SEL)action to:(id)target;
- (void)performClick:(id)sender;
@end

enum NSBezelStyle : NSUInteger { NSBezelStyleRounded = 1, NSBezelStyleTexturedRounded = 11 };
static const NSBezelStyle NSRoundedBezelStyle API_DEPRECATED("", macos(10.0, 10.12)) = NSBezelStyleRounded;
static const NSBezelStyle NSTexturedRoundedBezelStyle API_DEPRECATED("",
                                                                     macos(10.0, 10.12)) = NSBezelStyleTexturedRounded;
enum NSButtonType : NSUInteger {
  NSButtonTypeMomentaryLight = 0,
  NSButtonTypePushOnPushOff = 1,
  NSButtonTypeSwitch = 3,
};
static const NSButtonType NSPushOnPushOffButton API_DEPRECATED("", macos(10.0, 10.12)) = NSButtonTypePushOnPushOff;
static const NSButtonType NSSwitchButton API_DEPRECATED("", macos(10.0, 10.12)) = NSButtonTypeSwitch;
enum NSCellImagePosition : NSUInteger { NSNoImage = 0, NSImageOnly = 1, NSImageLeft = 2 };

@interface NSButton : NSControl
@property(copy) NSString* title;
@property(strong) NSImage* image;
@property NSCellImagePosition imagePosition;
@property NSBezelStyle bezelStyle;
@property(getter=isBordered) BOOL bordered;
@property NSControlStateValue state;
@property(copy) NSString* keyEquivalent;
@property NSEventModifierFlags keyEquivalentModifierMask;
- (void)setButtonType:(NSButtonType)type;
@end

@interface NSPopUpButton : NSButton
- (instancetype)initWithFrame:(NSRect)frame pullsDown:(BOOL)pullsDown;
- (void)addItemWithTitle:(NSString*)title;
- (void)selectItemAtIndex:(NSInteger)index;
@property(readonly) NSInteger indexOfSelectedItem;
@end

@interface NSTextField : NSControl
@property(getter=isEditable) BOOL editable;
@property(getter=isSelectable) BOOL selectable;
@property(getter=isBezeled) BOOL bezeled;
@property(getter=isBordered) BOOL bordered;
@property BOOL drawsBackground;
@property(copy) NSString* placeholderString;
@property(assign) id delegate;
+ (instancetype)labelWithString:(NSString*)string;
@end

enum NSImageScaling : NSUInteger { NSImageScaleProportionallyDown = 0, NSImageScaleProportionallyUpOrDown = 3 };
@interface NSImageView : NSControl
@property(strong) NSImage* image;
@property NSImageScaling imageScaling;
@property(getter=isEditable) BOOL editable;
@end
