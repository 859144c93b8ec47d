#pragma once

#import <Foundation/NSDictionary.h>

// The user's text replacements and substitution switches, from the global preferences and the application's own:
//   "text-replacements"     the items as they are stored; empty when the application has switched them off
//   "dash-substitution?"    as the application says, or else everywhere
//   "period-substitution?"  as everywhere
// What nobody has set is left out. Autoreleased.
[[nodiscard]] NSDictionary* TsTextReplacements();
