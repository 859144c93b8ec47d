#include "Settings/TsUserDefaults.h"

#import <Foundation/Foundation.h>

#include "Base/TsString.h"
#import "Extensions/NSDictionary+TsFile.h"
#include "Platform/StandardDirectories.h"

namespace {

NSUserDefaults* Defaults() { return [NSUserDefaults standardUserDefaults]; }

TsDefault NumberDefault(NSNumber* number) {
  const NSInteger integer = [number integerValue];
  const bool truth = [number boolValue] != NO;
  if (integer == static_cast<NSInteger>(truth)) return truth;
  return static_cast<std::int32_t>(integer);
}

struct Store {
  NSString* key;

  void operator()(TsNoDefault) const { [Defaults() removeObjectForKey:key]; }
  void operator()(bool value) const { [Defaults() setBool:value forKey:key]; }
  void operator()(std::int32_t value) const { [Defaults() setInteger:value forKey:key]; }
  void operator()(NSString* value) const { [Defaults() setObject:value forKey:key]; }
};

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

TsDefault TsUserDefault(NSString* key) {
  id value = [Defaults() objectForKey:key];
  if (NSNumber* number = As<NSNumber>(value)) return NumberDefault(number);
  if (NSString* text = As<NSString>(value)) return text;
  return TsNoDefault();
}

void TsSetUserDefault(NSString* key, const TsDefault& value) { std::visit(Store{key}, value); }

void TsSynchronizeUserDefaults() { [Defaults() synchronize]; }

NSDictionary* TsTextReplacements() {
  NSUserDefaults* own = Defaults();
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
