#pragma once

#import <Foundation/NSString.h>

// The version of the running application for crash events: "3.1 (412)".
[[nodiscard]] NSString* TsGetRelease();
