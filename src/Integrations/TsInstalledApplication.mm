#include "Integrations/TsInstalledApplication.h"

#include "Base/TsString.h"
#include "Platform/Applications.h"

NSString* TsInstalledBundleId(NSArray* identifiers) {
  for (NSString* identifier in identifiers) {
    if (tessaro::platform::FindApplication(TsStdString(identifier))) return identifier;
  }
  return nil;
}
