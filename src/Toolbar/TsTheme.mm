#include "Toolbar/TsTheme.h"

#import <Foundation/Foundation.h>

#include "Base/TsLog.h"
#include "Platform/SystemAppearance.h"

namespace {

NSString* const kThemeChanged = @"AppleInterfaceThemeChangedNotification";

}  // namespace

// The notification server may be missing: toolbars work without it.
void TsObserveTheme(id observer, SEL selector) {
  tessaro::platform::AnnounceAppearanceChanges();
  @try {
    [[NSDistributedNotificationCenter defaultCenter] addObserver:observer
                                                        selector:selector
                                                            name:kThemeChanged
                                                          object:nil];
  } @catch (NSException* exception) {
    TsLogWarning(@"Changes of the appearance won't be noticed: %@", [exception reason]);
  }
}

void TsLeaveTheme(id observer) {
  @try {
    [[NSDistributedNotificationCenter defaultCenter] removeObserver:observer name:kThemeChanged object:nil];
  } @catch (NSException* exception) {
    TsLogDebug(@"The appearance was not watched: %@", [exception reason]);
  }
}
