#pragma once

#import <Foundation/NSString.h>

#include <cstdint>
#include <variant>

// The application's standard user defaults, in the types that cross the script boundary. Main thread only.

struct TsNoDefault {};

using TsDefault = std::variant<TsNoDefault, bool, std::int32_t, NSString*>;

// A number that equals its truth value reads as that, and any other one truncated to 32 bits: 1 reads true, 2 reads 2.
// Values of other types read as none.
[[nodiscard]] TsDefault TsUserDefault(NSString* key);

// None removes the key.
void TsSetUserDefault(NSString* key, const TsDefault& value);

// Until then a change may be lost with the process.
void TsSynchronizeUserDefaults();
