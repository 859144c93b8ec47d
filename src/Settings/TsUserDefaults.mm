#include "Settings/TsUserDefaults.h"

#import <Foundation/Foundation.h>

#include "Base/Ref.h"

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

}  // namespace

TsDefault TsUserDefault(NSString* key) {
  id value = [Defaults() objectForKey:key];
  if (NSNumber* number = As<NSNumber>(value)) return NumberDefault(number);
  if (NSString* text = As<NSString>(value)) return text;
  return TsNoDefault();
}

void TsSetUserDefault(NSString* key, const TsDefault& value) { std::visit(Store{key}, value); }

void TsSynchronizeUserDefaults() { [Defaults() synchronize]; }
