#include "Settings/TsTextReplacements.h"

#import <Foundation/Foundation.h>

#include "Base/TsString.h"
#import "Extensions/NSDictionary+TsFile.h"
#include "Platform/StandardDirectories.h"

namespace {

NSString* const kGlobalPreferences = @"Library/Preferences/.GlobalPreferences.plist";

NSDictionary* GlobalPreferences() {
  NSString* home = TsNSString(tessaro::platform::HomeDirectory().native());
  return [NSDictionary ts_dictionaryInPropertyListFile:[home stringByAppendingPathComponent:kGlobalPreferences]];
}

bool IsSwitchedOff(id value) { return [value respondsToSelector:@selector(boolValue)] && ![value boolValue]; }

void AddIfSet(NSMutableDictionary* dictionary, NSString* key, id value) {
  if (value != nil) [dictionary setObject:value forKey:key];
}

}  // namespace

NSDictionary* TsTextReplacements() {
  NSUserDefaults* own = [NSUserDefaults standardUserDefaults];
  id dashes = [own objectForKey:@"WebAutomaticDashSubstitutionEnabled"];
  id replacements = [own objectForKey:@"WebAutomaticTextReplacementEnabled"];
  NSLog(@"localeDashSubstitution: %@: %@", dashes, replacements);

  NSDictionary* global = GlobalPreferences();
  NSMutableDictionary* result = [NSMutableDictionary dictionary];
  AddIfSet(result, @"text-replacements",
           IsSwitchedOff(replacements) ? [NSArray array] : [global objectForKey:@"NSUserDictionaryReplacementItems"]);
  AddIfSet(result, @"dash-substitution?",
           dashes != nil ? dashes : [global objectForKey:@"NSAutomaticDashSubstitutionEnabled"]);
  AddIfSet(result, @"period-substitution?", [global objectForKey:@"NSAutomaticPeriodSubstitutionEnabled"]);
  return result;
}
