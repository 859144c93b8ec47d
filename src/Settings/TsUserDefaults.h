#pragma once

#import <Foundation/NSDictionary.h>

#include <cstdint>
#include <variant>

// The application's standard user defaults, in the types that cross the script boundary. Main thread only.

struct TsNoDefault {};

using TsDefault = std::variant<TsNoDefault, bool, std::int32_t, NSString*>;

// A number that equals its truth value reads as a boolean, any other is truncated to 32 bits: 1 reads as true, 2 as 2.
// Values of other types read as TsNoDefault.
[[nodiscard]] TsDefault TsUserDefault(NSString* key);

// TsNoDefault removes the key.
void TsSetUserDefault(NSString* key, const TsDefault& value);

// Writes the changes to disk; before that they may be lost with the process.
void TsSynchronizeUserDefaults();

// The user's text replacements and substitution switches, from the global preferences and the application's own:
//   "text-replacements"     the items as they are stored; empty when the application has switched them off
//   "dash-substitution?"    the application's setting, or else the global one
//   "period-substitution?"  the global setting
// Settings without a value are left out. Autoreleased.
[[nodiscard]] NSDictionary* TsTextReplacements();
