#pragma once

#import <Foundation/Foundation.h>

// Other applications: which ones open what, what they are called, how they look. Main thread only.
//
// Entries describe an application each: "path", "name", "bundle-id", "default?", "our-entry?" and "image-path". Icons
// are PNG files, `size` points wide and high, in `directory`, which is made when it is missing. An icon that is there
// already is used as it is.

[[nodiscard]] NSArray* TsApplicationsForFileExtension(NSString* extension, NSInteger imageSize, NSString* directory);
[[nodiscard]] NSArray* TsApplicationsForURLScheme(NSString* scheme, NSInteger imageSize, NSString* directory);

// The entries of those that are installed. Without a directory there are no icons.
[[nodiscard]] NSArray* TsAppsFromBundleIds(NSArray* identifiers, NSString* standard, NSInteger imageSize,
                                           NSString* directory);

// nil when there is none.
[[nodiscard]] NSString* TsGetDefaultApplicationForURLScheme(NSString* scheme);
[[nodiscard]] bool TsSetDefaultApplicationForURLScheme(NSString* scheme, NSString* identifier);

[[nodiscard]] bool TsIsApplicationInstalled(NSString* identifier);

// nil when it isn't installed.
[[nodiscard]] NSString* TsApplicationNameForBundleId(NSString* identifier);

// The paths of the files written, nil where that failed. A file that is there already is replaced.
[[nodiscard]] NSString* TsGetIconForPathExtension(NSString* extension, NSInteger size, NSString* directory);
[[nodiscard]] NSString* TsGetApplicationIconForBundleId(NSString* identifier, NSInteger size, NSString* directory);

[[nodiscard]] bool TsOpenFile(NSString* path, NSString* applicationPath, bool deactivate);
[[nodiscard]] bool TsOpenInfoForFile(NSString* path);
