#import "Extensions/NSDictionary+TsFile.h"

#import <Foundation/Foundation.h>

#include "Base/Ref.h"

namespace {

constexpr unsigned long long kMostBytes = 16 << 20;

// Reading a pipe or a device might never end.
bool IsReadable(NSString* path) {
  NSDictionary* attributes =
      [[NSFileManager defaultManager] attributesOfItemAtPath:[path stringByResolvingSymlinksInPath] error:nullptr];
  return [[attributes fileType] isEqualToString:NSFileTypeRegular] && [attributes fileSize] <= kMostBytes;
}

}  // namespace

@implementation NSDictionary (TsFile)

+ (NSDictionary*)ts_dictionaryInPropertyListFile:(NSString*)path {
  NSData* data = IsReadable(path) ? [NSData dataWithContentsOfFile:path] : nil;
  if (data == nil) return nil;
  @try {
    id contents = [NSPropertyListSerialization propertyListWithData:data
                                                            options:NSPropertyListImmutable
                                                             format:nullptr
                                                              error:nullptr];
    return As<NSDictionary>(contents);
  } @catch (NSException*) {
    return nil;
  }
}

@end
