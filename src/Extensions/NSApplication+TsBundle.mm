#import "Extensions/NSApplication+TsBundle.h"

#import <Foundation/NSBundle.h>

namespace {

NSString* InformationText(NSString* key) {
  id value = [[NSBundle mainBundle] objectForInfoDictionaryKey:key];
  return [value isKindOfClass:[NSString class]] ? value : nil;
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
