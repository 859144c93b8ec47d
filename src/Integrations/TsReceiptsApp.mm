#import "Integrations/TsReceiptsApp.h"

#include "Base/TsString.h"
#include "Integrations/TsInstalledApplication.h"
#include "Integrations/TsOpenWith.h"
#include "Platform/Applications.h"

@implementation TsReceiptsApp

+ (NSString*)installedBundleId {
  return TsInstalledBundleId(@[ @"com.apperdeck.mac.Receipts", @"com.apperdeck.mac.Receipts-setapp" ]);
}

+ (NSURL*)urlForApplication {
  const auto application = tessaro::platform::FindApplication(TsStdString([self installedBundleId]));
  return application ? [NSURL fileURLWithPath:TsNSString(application->path)] : nil;
}

+ (void)importEMLWithPath:(NSString*)path {
  TsOpenWith(path, [[self urlForApplication] path]);
}

@end
