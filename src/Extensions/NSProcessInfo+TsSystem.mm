#import "Extensions/NSProcessInfo+TsSystem.h"

#include "Base/TsString.h"
#include "Platform/OperatingSystem.h"

@implementation NSProcessInfo (TsSystem)

- (NSString*)ts_osVersion {
  return TsNSString(tessaro::platform::Version());
}

- (BOOL)ts_isMojaveOrBetter {
  return tessaro::platform::IsAtLeastMacOS(10, 14);
}

@end
