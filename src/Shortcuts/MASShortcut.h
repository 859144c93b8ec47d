#pragma once

#import <Foundation/Foundation.h>
#import <Foundation/NSString.h>

@class NSEvent;

// A key, identified by its place (a virtual key code), with held modifiers: Command, Option, Control, Shift. Or held
// modifiers alone, without a key. Immutable, and can be archived.
@interface MASShortcut : NSObject <NSSecureCoding, NSCopying> {
  unsigned short _keyCode;
  NSUInteger _modifierFlags;
}

// Without a key for a change of modifiers, and for a key without a virtual key code.
+ (instancetype)shortcutWithEvent:(NSEvent*)event;
+ (instancetype)shortcutWithKeyCode:(unsigned short)keyCode modifierFlags:(NSUInteger)modifierFlags;
- (instancetype)initWithKeyCode:(unsigned short)keyCode modifierFlags:(NSUInteger)modifierFlags;

- (unsigned short)keyCode;
- (NSUInteger)modifierFlags;

// The key's name in the keyboard's layout: "M", "F5", "Space", "↩". Empty if missing.
- (NSString*)keyCodeString;

// The key as in menu items; empty if missing.
- (NSString*)keyEquivalent;

// The symbols of the modifiers, as "⌃⌥⇧⌘".
- (NSString*)modifierFlagsString;

// The symbols, followed by the key.
- (NSString*)description;

@end

// Between a shortcut and the dictionary {"keyCode", "modifierFlags"}; nil for everything else.
@interface MASDictionaryTransformer : NSValueTransformer
@end

extern NSString* const MASDictionaryTransformerName;

// Whether a virtual key code is that of F1 to F20.
[[nodiscard]] bool IsFunctionKey(unsigned short keyCode);

// Whether it is that of a key that types its own name.
[[nodiscard]] bool IsTypingKey(unsigned short keyCode);
