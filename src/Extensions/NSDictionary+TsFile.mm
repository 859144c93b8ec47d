#import "Extensions/NSDictionary+TsFile.h"

#import <Foundation/Foundation.h>

#include "Base/TsString.h"
#include "Platform/Files.h"

static constexpr std::size_t kMostBytes = 16 << 20;

@implementation NSDictionary (TsFile)

+ (NSDictionary*)ts_dictionaryInPropertyListFile:(NSString*)path {
  const auto bytes = tessaro::platform::ReadFile(TsStdString(path), kMostBytes);
  if (!bytes) return nil;
  @try {
    id contents = [NSPropertyListSerialization propertyListWithData:[NSData dataWithBytes:bytes->data()
                                                                                   length:bytes->size()]
                                                            options:NSPropertyListImmutable
                                                             format:nullptr
                                                              error:nullptr];
    return As<NSDictionary>(contents);
  } @catch (NSException*) {
    return nil;
  }
}

@end
