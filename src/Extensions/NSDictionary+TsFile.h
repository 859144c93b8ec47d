#pragma once

#import <Foundation/NSDictionary.h>

@interface NSDictionary (TsFile)

// The dictionary in a property list file, XML or binary. nil when there is no such file, or no dictionary in it.
+ (NSDictionary*)ts_dictionaryInPropertyListFile:(NSString*)path;

@end
