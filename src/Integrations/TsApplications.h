#pragma once

#import <Foundation/NSString.h>

@class NSArray;

// The first bundle identifier whose application is installed; nil when none is. Any thread.
[[nodiscard]] NSString* TsInstalledBundleId(NSArray* identifiers);

// Opens a file with the application at a path, and deactivates this one. Any thread.
void TsOpenWith(NSString* path, NSString* applicationPath);
