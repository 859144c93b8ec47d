#import "Extensions/NSApplication+TsBundle.h"

#import <Foundation/NSBundle.h>

@implementation NSApplication (TsBundle)

+ (NSString*)ts_bundleName {
  id name = [[NSBundle mainBundle] objectForInfoDictionaryKey:@"CFBundleName"];
  return [name isKindOfClass:[NSString class]] ? name : nil;
}

@end
