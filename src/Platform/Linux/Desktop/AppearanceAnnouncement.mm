#import <AppKit/AppKit.h>

#include "Platform/Linux/Desktop/AppearanceChanges.h"
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

void AnnounceAppearanceChanges() { ListenForAppearanceChanges(Announce); }

}  // namespace tessaro::platform
