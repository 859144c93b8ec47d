#import "Extensions/NSApplication+TsBundle.h"

#import <Foundation/NSBundle.h>

#include "Base/Ref.h"

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

@end
