#pragma once

#import <Foundation/NSObject.h>
#include <node_api.h>

// Conversion of values between script and Cocoa, by content: strings, numbers, booleans, null, arrays and dictionaries,
// and Buffers as NSData. Anything else crosses as its description.

// A missing object is null.
[[nodiscard]] napi_value ToScript(napi_env env, id object);

// null and undefined give nil, inside of arrays and dictionaries NSNull. The object is autoreleased.
[[nodiscard]] id FromScript(napi_env env, napi_value value);
