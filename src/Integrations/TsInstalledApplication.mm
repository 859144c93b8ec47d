#include "Integrations/TsInstalledApplication.h"

#include "Platform/Applications.h"
#include "Utilities/TsString.h"

NSString* TsInstalledBundleId(NSArray* identifiers) {
  for (NSString* identifier in identifiers) {
    if (tessaro::platform::FindApplication(TsStdString(identifier))) return identifier;
  }
  return nil;
}
