#pragma once

#import <AppKit/NSEvent.h>
#import <AppKit/NSMenuItem.h>

namespace tessaro::platform {

// A key press, as menu items are compared with it. GNUstep's own comparison takes "n" with Shift for plain "n", and
// knows nothing of Caps Lock and of keyboards whose letters are not Latin.
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

}  // namespace tessaro::platform
