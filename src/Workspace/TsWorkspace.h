#pragma once

#import <Foundation/Foundation.h>

// The installed applications: their names, icons, and the files and links they open. Main thread only.
//
// An entry describes one application: "path", "name", "bundle-id", "default?", "our-entry?" and "image-path". Icons are
// PNG files, `size` points wide and high, in `directory`, which is created if needed. An existing icon is reused.

[[nodiscard]] NSArray* TsApplicationsForFileExtension(NSString* extension, NSInteger imageSize, NSString* directory);
[[nodiscard]] NSArray* TsApplicationsForURLScheme(NSString* scheme, NSInteger imageSize, NSString* directory);

// The entries of the installed ones. Without a directory there are no icons.
[[nodiscard]] NSArray* TsAppsFromBundleIds(NSArray* identifiers, NSString* standard, NSInteger imageSize,
                                           NSString* directory);

// nil if missing.
[[nodiscard]] NSString* TsGetDefaultApplicationForURLScheme(NSString* scheme);
[[nodiscard]] bool TsSetDefaultApplicationForURLScheme(NSString* scheme, NSString* identifier);

[[nodiscard]] bool TsIsApplicationInstalled(NSString* identifier);

// nil when it isn't installed.
[[nodiscard]] NSString* TsApplicationNameForBundleId(NSString* identifier);

// The path of the written icon; nil after a failure. An existing file is overwritten.
[[nodiscard]] NSString* TsGetIconForPathExtension(NSString* extension, NSInteger size, NSString* directory);
[[nodiscard]] NSString* TsGetApplicationIconForBundleId(NSString* identifier, NSInteger size, NSString* directory);

[[nodiscard]] bool TsOpenFile(NSString* path, NSString* applicationPath, bool deactivate);
[[nodiscard]] bool TsOpenInfoForFile(NSString* path);
