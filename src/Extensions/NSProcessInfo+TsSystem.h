#pragma once

#import <Foundation/NSProcessInfo.h>

// The operating system.
@interface NSProcessInfo (TsSystem)

// The operating system's version: "10.14.6" on a Mac, the distribution's own number elsewhere.
- (NSString*)ts_osVersion;

- (BOOL)ts_isMojaveOrBetter;

@end
