#pragma once

#include <memory>

#include "Base/Ref.h"
#include "Platform/Cocoa.h"
#include "Platform/Updater.h"

// The window of a check for updates on request of the user: its result, with Install, Skip and Later, the
// progress of an installation, and how it ended. Main thread only.
@interface TsUpdateWindow : NSWindowController {
 @private
  std::unique_ptr<tessaro::platform::UpdaterInterface> _interface;
  tessaro::platform::UpdaterInterface::Choose _choose;
  Ref<NSProgressIndicator> _progress;
  BOOL _isBusy;
}

+ (instancetype)sharedInstance;

// Called by the updater; belongs to the window.
- (tessaro::platform::UpdaterInterface*)interface;

@end
