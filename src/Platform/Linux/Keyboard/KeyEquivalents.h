#pragma once

#import <AppKit/NSEvent.h>
#import <AppKit/NSMenuItem.h>

namespace tessaro::platform {

// Compares a key press with menu items. GNUstep's own comparison confuses Shift+"n" with "n", and fails with Caps Lock
// on and on keyboards without Latin letters.
class KeyPress {
 public:
  explicit KeyPress(NSEvent* event);

  [[nodiscard]] bool Chooses(NSMenuItem* item) const;

 private:
  [[nodiscard]] bool ChoosesCharacter(NSString* key, NSUInteger mask) const;

  NSString* characters_;
  NSString* unshifted_ = nil;
  NSUInteger modifiers_;
};

// The item's key equivalent as the user reads it: "Ctrl+Shift+B", with the user's keys for Command, Option and Control.
// Empty without a key equivalent. GNUstep shows "#B", and nothing for arrows and function keys.
[[nodiscard]] NSString* ShortcutText(NSMenuItem* item);

}  // namespace tessaro::platform
