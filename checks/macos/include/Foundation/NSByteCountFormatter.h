#pragma once

#include <Foundation/NSDate.h>

enum NSByteCountFormatterCountStyle : NSInteger {
  NSByteCountFormatterCountStyleFile = 0,
  NSByteCountFormatterCountStyleMemory = 1,
};

@interface NSByteCountFormatter : NSFormatter
+ (NSString*)stringFromByteCount:(long long)count countStyle:(NSByteCountFormatterCountStyle)style;
@end
