#pragma once

#include <AppKit/AppKitDefines.h>

enum NSEventType : NSUInteger {
  NSEventTypeLeftMouseDown = 1,
  NSEventTypeLeftMouseUp = 2,
  NSEventTypeMouseMoved = 5,
  NSEventTypeKeyDown = 10,
  NSEventTypeKeyUp = 11,
  NSEventTypeFlagsChanged = 12,
  NSEventTypeApplicationDefined = 15,
};
static const NSEventType NSLeftMouseDown API_DEPRECATED("", macos(10.0, 10.12)) = NSEventTypeLeftMouseDown;
static const NSEventType NSKeyDown API_DEPRECATED("", macos(10.0, 10.12)) = NSEventTypeKeyDown;
static const NSEventType NSKeyUp API_DEPRECATED("", macos(10.0, 10.12)) = NSEventTypeKeyUp;
static const NSEventType NSFlagsChanged API_DEPRECATED("", macos(10.0, 10.12)) = NSEventTypeFlagsChanged;

using NSEventMask = unsigned long long;
enum : NSEventMask {
  NSEventMaskKeyDown = 1 << 10,
  NSEventMaskKeyUp = 1 << 11,
  NSEventMaskFlagsChanged = 1 << 12,
};
static const NSEventMask NSKeyDownMask API_DEPRECATED("", macos(10.0, 10.12)) = NSEventMaskKeyDown;
static const NSEventMask NSKeyUpMask API_DEPRECATED("", macos(10.0, 10.12)) = NSEventMaskKeyUp;
static const NSEventMask NSFlagsChangedMask API_DEPRECATED("", macos(10.0, 10.12)) = NSEventMaskFlagsChanged;

using NSEventModifierFlags = NSUInteger;
enum : NSEventModifierFlags {
  NSEventModifierFlagCapsLock = 1 << 16,
  NSEventModifierFlagShift = 1 << 17,
  NSEventModifierFlagControl = 1 << 18,
  NSEventModifierFlagOption = 1 << 19,
  NSEventModifierFlagCommand = 1 << 20,
  NSEventModifierFlagNumericPad = 1 << 21,
  NSEventModifierFlagHelp = 1 << 22,
  NSEventModifierFlagFunction = 1 << 23,
  NSEventModifierFlagDeviceIndependentFlagsMask = 0xffff0000UL,
};
#define CHECK_OLD_MODIFIER(old, now) static const NSEventModifierFlags old API_DEPRECATED("", macos(10.0, 10.12)) = now
CHECK_OLD_MODIFIER(NSAlphaShiftKeyMask, NSEventModifierFlagCapsLock);
CHECK_OLD_MODIFIER(NSShiftKeyMask, NSEventModifierFlagShift);
CHECK_OLD_MODIFIER(NSControlKeyMask, NSEventModifierFlagControl);
CHECK_OLD_MODIFIER(NSAlternateKeyMask, NSEventModifierFlagOption);
CHECK_OLD_MODIFIER(NSCommandKeyMask, NSEventModifierFlagCommand);
CHECK_OLD_MODIFIER(NSNumericPadKeyMask, NSEventModifierFlagNumericPad);
CHECK_OLD_MODIFIER(NSHelpKeyMask, NSEventModifierFlagHelp);
CHECK_OLD_MODIFIER(NSFunctionKeyMask, NSEventModifierFlagFunction);
CHECK_OLD_MODIFIER(NSDeviceIndependentModifierFlagsMask, NSEventModifierFlagDeviceIndependentFlagsMask);

enum : unichar {
  NSUpArrowFunctionKey = 0xF700,
  NSDownArrowFunctionKey = 0xF701,
  NSLeftArrowFunctionKey = 0xF702,
  NSRightArrowFunctionKey = 0xF703,
  NSF1FunctionKey = 0xF704,
  NSF2FunctionKey = 0xF705,
  NSF3FunctionKey = 0xF706,
  NSF4FunctionKey = 0xF707,
  NSF5FunctionKey = 0xF708,
  NSF35FunctionKey = 0xF726,
  NSInsertFunctionKey = 0xF727,
  NSDeleteFunctionKey = 0xF728,
  NSHomeFunctionKey = 0xF729,
  NSBeginFunctionKey = 0xF72A,
  NSEndFunctionKey = 0xF72B,
  NSPageUpFunctionKey = 0xF72C,
  NSPageDownFunctionKey = 0xF72D,
  NSMenuFunctionKey = 0xF735,
  NSClearLineFunctionKey = 0xF739,
  NSHelpFunctionKey = 0xF746,
};
enum : unichar {
  NSEnterCharacter = 0x0003,
  NSBackspaceCharacter = 0x0008,
  NSTabCharacter = 0x0009,
  NSNewlineCharacter = 0x000a,
  NSCarriageReturnCharacter = 0x000d,
  NSBackTabCharacter = 0x0019,
  NSDeleteCharacter = 0x007f,
};

@interface NSEvent : NSObject <NSCopying, NSCoding>
@property(readonly) NSEventType type;
@property(readonly) NSEventModifierFlags modifierFlags;
@property(class, readonly) NSEventModifierFlags modifierFlags;
@property(readonly) NSTimeInterval timestamp;
@property(readonly, assign) NSWindow* window;
@property(readonly) NSInteger windowNumber;
@property(readonly) NSInteger clickCount;
@property(readonly, copy) NSString* characters;
@property(readonly, copy) NSString* charactersIgnoringModifiers;
@property(readonly, getter=isARepeat) BOOL ARepeat;
@property(readonly) unsigned short keyCode;
@property(readonly) NSPoint locationInWindow;
@property(class, readonly) NSPoint mouseLocation;
+ (id)addLocalMonitorForEventsMatchingMask:(NSEventMask)mask handler:(NSEvent* (^)(NSEvent* event))handler;
+ (void)removeMonitor:(id)monitor;
@end
