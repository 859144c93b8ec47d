#pragma once

#import <Foundation/Foundation.h>

@class NSEvent;

// A key, known by its place (a virtual key code), with the modifiers held: Command, Option, Control, Shift. Or held
// modifiers alone, without a key. Immutable; archived as itself.
@interface MASShortcut : NSObject <NSSecureCoding, NSCopying> {
  unsigned short _keyCode;
  NSUInteger _modifierFlags;
}

// What a change of modifiers holds has no key, nor has a key without a virtual key code.
+ (instancetype)shortcutWithEvent:(NSEvent*)event;
+ (instancetype)shortcutWithKeyCode:(unsigned short)keyCode modifierFlags:(NSUInteger)modifierFlags;
- (instancetype)initWithKeyCode:(unsigned short)keyCode modifierFlags:(NSUInteger)modifierFlags;

- (unsigned short)keyCode;
- (NSUInteger)modifierFlags;

// The key as people call it in the keyboard's layout: "M", "F5", "Space", "↩". Empty when there is none.
- (NSString*)keyCodeString;

// The key as menu items name theirs; empty when there is none.
- (NSString*)keyEquivalent;

// The symbols of the modifiers, as "⌃⌥⇧⌘".
- (NSString*)modifierFlagsString;

// These, followed by the key.
- (NSString*)description;

@end

// Between a shortcut and the dictionary {"keyCode", "modifierFlags"}; everything else is nil on the other side.
@interface MASDictionaryTransformer : NSValueTransformer
@end

extern NSString* const MASDictionaryTransformerName;
