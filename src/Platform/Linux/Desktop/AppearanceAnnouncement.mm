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
    // Whoever wants to hear of it can't either.
  }
}

}  // namespace

void AnnounceAppearanceChanges() { ListenForAppearanceChanges(Announce); }

}  // namespace tessaro::platform
