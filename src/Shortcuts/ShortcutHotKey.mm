#include "Shortcuts/ShortcutHotKey.h"

#import "Extensions/NSEvent+TsKeyboard.h"
#import "Shortcuts/MASShortcut.h"

using tessaro::platform::HotKey;
using tessaro::platform::HotKeyStatus;

HotKey ToHotKey(MASShortcut* shortcut) {
  const auto holds = [flags = [shortcut modifierFlags]](NSUInteger modifier) { return (flags & modifier) != 0; };
  return {
      .virtualKeyCode = [shortcut keyCode],
      .command = holds(kTsCommand),
      .option = holds(kTsOption),
      .control = holds(kTsControl),
      .shift = holds(kTsShift),
  };
}

NSString* WhyInactive(MASShortcut* shortcut, HotKeyStatus status) {
  switch (status) {
    case HotKeyStatus::Active:
      return nil;
    case HotKeyStatus::Taken:
      return [NSString stringWithFormat:@"%@ is already used by another application or by the system.", shortcut];
    case HotKeyStatus::NotOnKeyboard:
      return [NSString stringWithFormat:@"This keyboard has no %@.", shortcut];
    case HotKeyStatus::Unsupported:
      return @"This session doesn’t let applications have shortcuts outside their own windows.";
  }
}
