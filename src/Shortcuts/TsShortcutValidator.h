#pragma once

#import <Foundation/NSObject.h>

#include "Platform/HotKeys.h"

@class MASShortcut, NSString;

// The shortcut as a system-wide hot key.
[[nodiscard]] tessaro::platform::HotKey ToHotKey(MASShortcut* shortcut);

// Why a shortcut in this state does not work, in a sentence; nil when it works.
[[nodiscard]] NSString* WhyInactive(MASShortcut* shortcut, tessaro::platform::HotKeyStatus status);

// Which shortcuts may be recorded. Main thread only.
@interface TsShortcutValidator : NSObject

+ (instancetype)sharedValidator;

// Whether the shortcut doesn't interfere with typing: a function key, or any key with Command or Control; with Option
// alone, which types letters on many keyboards, only keys that type nothing.
- (BOOL)isShortcutValid:(MASShortcut*)shortcut;

// Whether the shortcut is unavailable: another application or an item of the main menu has it, or the keyboard or the
// session doesn't support it. `explanation` says why in a sentence.
- (BOOL)isShortcutAlreadyTakenBySystem:(MASShortcut*)shortcut explanation:(NSString**)explanation;

@end
