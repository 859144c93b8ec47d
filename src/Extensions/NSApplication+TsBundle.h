#pragma once

#import <AppKit/NSApplication.h>

// The running application's bundle. Class methods, as they serve without a display too, where there is no instance.
@interface NSApplication (TsBundle)

// What the bundle calls itself; nil when it does not say.
+ (NSString*)ts_bundleName;

// Its version: the build's, and the one that people know. nil when it does not say.
+ (NSString*)ts_bundleVersion;
+ (NSString*)ts_shortVersionString;

@end
