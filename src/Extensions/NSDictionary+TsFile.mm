#import "Extensions/NSDictionary+TsFile.h"

#import <Foundation/Foundation.h>

@implementation NSDictionary (TsFile)

+ (NSDictionary*)ts_dictionaryInPropertyListFile:(NSString*)path {
  NSData* data = [NSData dataWithContentsOfFile:path];
  if (data == nil) return nil;
  @try {
    id contents = [NSPropertyListSerialization propertyListWithData:data
                                                            options:NSPropertyListImmutable
                                                             format:nullptr
                                                              error:nullptr];
    return [contents isKindOfClass:[NSDictionary class]] ? contents : nil;
  } @catch (NSException*) {
    return nil;
  }
}

@end
