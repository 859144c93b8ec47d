#pragma once

#import <Foundation/Foundation.h>

// The first of the bundle identifiers of which there is an application; nil when there is none.
[[nodiscard]] NSString* TsInstalledBundleId(NSArray* identifiers);
