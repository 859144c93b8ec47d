#import <AppKit/AppKit.h>

#include <utility>

#include "Platform/Linux/Desktop/DesktopLook.h"
#include "Platform/SystemAppearance.h"

namespace tessaro::platform {

namespace {

void Announce() {
  for (NSWindow* window in [NSApp windows]) [[[window contentView] superview] setNeedsDisplay:YES];
  @try {
    [[NSDistributedNotificationCenter defaultCenter] postNotificationName:@"AppleInterfaceThemeChangedNotification"
                                                                   object:nil
                                                                 userInfo:nil
                                                       deliverImmediately:YES];
  } @catch (NSException*) {
    // Without the notification server there are no observers either.
  }
}

}  // namespace

void AnnounceAppearanceChanges() {
  static bool isListening = false;
  if (std::exchange(isListening, true)) return;
  ListenForLookChanges([wasDark = CurrentLook().isDark](const DesktopLook& look) mutable {
    if (std::exchange(wasDark, look.isDark) != look.isDark) Announce();
  });
}

}  // namespace tessaro::platform
