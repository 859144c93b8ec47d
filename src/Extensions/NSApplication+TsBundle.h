#pragma once

#import <AppKit/NSApplication.h>

// The running application's bundle. Class methods, because without a display there is no instance.
@interface NSApplication (TsBundle)

// The bundle's name; nil when it has none.
+ (NSString*)ts_bundleName;

// The build's version, and the version that users know. nil when the bundle has none.
+ (NSString*)ts_bundleVersion;
+ (NSString*)ts_shortVersionString;

@end
