#pragma once

#import <Foundation/NSObject.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

@class MASShortcut, NSString;

// The shortcut archived in the standard user defaults under a key; nil if missing.
[[nodiscard]] MASShortcut* TsStoredShortcut(NSString* defaultsKey);

class TsBoundShortcut;

// Actions for the shortcuts stored in the standard user defaults, pressed in any application. Main thread only.
@interface TsShortcutBinder : NSObject {
  std::map<std::string, std::unique_ptr<TsBoundShortcut>> _bound;
}

+ (instancetype)sharedBinder;

// Calls `action` whenever the shortcut stored under the key is pressed; replaces the key's earlier action. A shortcut
// that can't be registered is logged.
- (void)bindShortcutWithDefaultsKey:(NSString*)key toAction:(std::function<void()>)action;

@end
