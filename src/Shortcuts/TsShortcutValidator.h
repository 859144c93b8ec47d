#pragma once

#import <Foundation/NSObject.h>

@class MASShortcut, NSString;

// Which shortcuts may be recorded. Main thread only.
@interface TsShortcutValidator : NSObject

+ (instancetype)sharedValidator;

// One that takes nothing from those who type: a function key, or any key with Command or Control; with Option alone,
// which types letters on many keyboards, a key that types none.
- (BOOL)isShortcutValid:(MASShortcut*)shortcut;

// Whether the shortcut would not arrive, or would never again arrive where it does now: another application has it, an
// item of the main menu has it, the keyboard or the session can't give it. `explanation` says in a sentence why.
- (BOOL)isShortcutAlreadyTakenBySystem:(MASShortcut*)shortcut explanation:(NSString**)explanation;

@end
