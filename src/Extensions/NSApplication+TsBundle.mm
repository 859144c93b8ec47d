#import "Extensions/NSApplication+TsBundle.h"

#import <Foundation/NSBundle.h>

#include "Base/TsString.h"
#include "Platform/OperatingSystem.h"

namespace {

NSString* InformationText(NSString* key) {
  return As<NSString>([[NSBundle mainBundle] objectForInfoDictionaryKey:key]);
}

}  // namespace

@implementation NSApplication (TsBundle)

+ (NSString*)ts_bundleName {
  return InformationText(@"CFBundleName");
}

+ (NSString*)ts_bundleVersion {
  return InformationText(@"CFBundleVersion");
}

+ (NSString*)ts_shortVersionString {
  return InformationText(@"CFBundleShortVersionString");
}

+ (NSString*)ts_osVersion {
  return TsNSString(tessaro::platform::Version());
}

+ (BOOL)ts_isMojaveOrBetter {
  return tessaro::platform::IsAtLeastMacOS(10, 14);
}

@end
