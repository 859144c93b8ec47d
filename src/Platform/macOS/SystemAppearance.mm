#include "Platform/SystemAppearance.h"

#import <Foundation/Foundation.h>

// The system's appearance, in the user's global preferences. The application's own may differ, where the host has set
// one for itself. Main thread only; no consent.
namespace tessaro::platform {

bool IsDarkMode() {
  NSString* style = [[NSUserDefaults standardUserDefaults] stringForKey:@"AppleInterfaceStyle"];
  return [style caseInsensitiveCompare:@"Dark"] == NSOrderedSame && style != nil;
}

// The system posts AppleInterfaceThemeChangedNotification by itself.
void AnnounceAppearanceChanges() {}

}  // namespace tessaro::platform
