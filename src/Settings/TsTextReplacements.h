#pragma once

#import <Foundation/NSDictionary.h>

// The user's text replacements and substitution switches, from the global preferences and the application's own:
//   "text-replacements"     the items as they are stored; empty when the application has switched them off
//   "dash-substitution?"    the application's setting, or else the global one
//   "period-substitution?"  the global setting
// Settings without a value are left out. Autoreleased.
[[nodiscard]] NSDictionary* TsTextReplacements();
