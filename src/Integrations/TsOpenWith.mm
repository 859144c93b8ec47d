#include "Integrations/TsOpenWith.h"

#include "Platform/Applications.h"
#include "Platform/Cocoa.h"
#include "Platform/MainQueue.h"
#include "Platform/WindowServer.h"
#include "Utilities/TsLog.h"
#include "Utilities/TsString.h"

namespace platform = tessaro::platform;

void TsOpenWith(NSString* path, NSString* applicationPath) {
  if (applicationPath == nil || !platform::OpenFile(TsStdString(path), TsStdString(applicationPath))) {
    TsLogWarning(@"Couldn't open %@ with %@", path, applicationPath);
    return;
  }
  platform::MainQueue::Shared().Post([] {
    if (platform::IsWindowServerAvailable()) [NSApp deactivate];
  });
}
