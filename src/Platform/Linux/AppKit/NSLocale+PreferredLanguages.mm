#import <Foundation/Foundation.h>

#include "Platform/Linux/Base/PreferredLanguages.h"

// GNUstep returns languages without their regions: "de" to a user in Austria. The run time takes a category's method
// before the class's own.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"
@implementation NSLocale (PreferredLanguages)

+ (NSArray*)preferredLanguages {
  NSMutableArray* languages = [NSMutableArray array];
  for (const std::string& language : tessaro::platform::PreferredLanguagesOfEnvironment()) {
    [languages addObject:[NSString stringWithUTF8String:language.c_str()]];
  }
  return languages;
}

@end
#pragma clang diagnostic pop
