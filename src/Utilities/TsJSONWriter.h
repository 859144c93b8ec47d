#pragma once

#import <Foundation/Foundation.h>

// Compact JSON of an array or a dictionary, autoreleased; nil and an error when that can't be: `error` must not be
// null.
[[nodiscard]] NSString* TsWriteJSON(id object, NSError** error);
