#import "Extensions/NSProcessInfo+TsSystem.h"

#include "Platform/OperatingSystem.h"
#include "Utilities/TsString.h"

@implementation NSProcessInfo (TsSystem)

- (NSString*)ts_osVersion {
  return TsNSString(tessaro::platform::Version());
}

- (BOOL)ts_isMojaveOrBetter {
  return tessaro::platform::IsAtLeastMacOS(10, 14);
}

@end
