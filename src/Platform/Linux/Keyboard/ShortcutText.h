#pragma once

#import <AppKit/NSMenuItem.h>

namespace tessaro::platform {

// The item's key equivalent as the user reads it: "Ctrl+Shift+B", with the user's keys for Command, Option and Control.
// Empty without a key equivalent. GNUstep shows "#B", and nothing for arrows and function keys.
[[nodiscard]] NSString* ShortcutText(NSMenuItem* item);

}  // namespace tessaro::platform
