#pragma once

#import <Foundation/NSString.h>

// The version of the application that runs, as crash events name it: "3.1 (412)". Made once.
[[nodiscard]] NSString* TsGetRelease();
