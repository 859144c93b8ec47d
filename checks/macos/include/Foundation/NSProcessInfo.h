#pragma once

#include <Foundation/NSObject.h>

struct NSOperatingSystemVersion {
  NSInteger majorVersion;
  NSInteger minorVersion;
  NSInteger patchVersion;
};

@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
@property(copy) NSString* processName;
@property(readonly, copy) NSArray* arguments;
@property(readonly, copy) NSDictionary* environment;
@property(readonly, copy) NSString* globallyUniqueString;
@property(readonly) NSOperatingSystemVersion operatingSystemVersion;
- (BOOL)isOperatingSystemAtLeastVersion:(NSOperatingSystemVersion)version;
@end
