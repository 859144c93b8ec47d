#include "Integrations/TsOpenWith.h"

#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Applications.h"
#include "Platform/Cocoa.h"
#include "Platform/MainQueue.h"
#include "Platform/WindowServer.h"

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
