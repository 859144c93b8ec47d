#pragma once

#import <AppKit/NSMenuItem.h>

namespace tessaro::platform {

// The item's key equivalent for the user: "Ctrl+Shift+B", by the keys that the user has for Command, Option and
// Control. Empty for none. GNUstep writes "#B", and nothing for arrows and function keys.
[[nodiscard]] NSString* ShortcutText(NSMenuItem* item);

}  // namespace tessaro::platform
