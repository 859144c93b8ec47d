#pragma once

#import <Foundation/NSObject.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

@class MASShortcut, NSString;

// The shortcut that is archived in the standard user defaults under a key; nil when there is none.
[[nodiscard]] MASShortcut* TsStoredShortcut(NSString* defaultsKey);

class TsBoundShortcut;

// Actions for the shortcuts stored in the standard user defaults, pressed in whichever application. Main thread only.
@interface TsShortcutBinder : NSObject {
  std::map<std::string, std::unique_ptr<TsBoundShortcut>> _bound;
}

+ (instancetype)sharedBinder;

// Calls `action` whenever the shortcut is pressed that is stored under the key then; instead of an action that the key
// was bound to before. What keeps a shortcut from being heard is logged.
- (void)bindShortcutWithDefaultsKey:(NSString*)key toAction:(std::function<void()>)action;

@end
