#pragma once

#import <AppKit/NSApplication.h>

// The running application's bundle and system. Class methods, because without a display there is no instance.
@interface NSApplication (TsBundle)

// The bundle's name; nil when it has none.
+ (NSString*)ts_bundleName;

// The build's version, and the version that users know. nil when the bundle has none.
+ (NSString*)ts_bundleVersion;
+ (NSString*)ts_shortVersionString;

// The operating system's version: "10.14.6" on a Mac, the distribution's own number elsewhere.
+ (NSString*)ts_osVersion;

+ (BOOL)ts_isMojaveOrBetter;

@end
