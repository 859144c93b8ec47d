#include "Integrations/TsApplications.h"

#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Applications.h"
#include "Platform/Cocoa.h"
#include "Platform/MainQueue.h"
#include "Platform/WindowServer.h"

namespace platform = tessaro::platform;

NSString* TsInstalledBundleId(NSArray* identifiers) {
  for (NSString* identifier in identifiers) {
    if (platform::FindApplication(TsStdString(identifier))) return identifier;
  }
  return nil;
}

void TsOpenWith(NSString* path, NSString* applicationPath) {
  // Without this, no path would mean the file's default application.
  if (applicationPath == nil) return TsLogWarning(@"Couldn't open %@: the application isn't installed", path);
  const auto opened = platform::OpenFile(TsStdString(path), TsStdString(applicationPath));
  if (!opened) {
    return TsLogWarning(@"Couldn't open %@ with %@: %s", path, applicationPath, opened.error().message.c_str());
  }
  platform::MainQueue::Shared().Post([] {
    if (platform::IsWindowServerAvailable()) [NSApp deactivate];
  });
}
