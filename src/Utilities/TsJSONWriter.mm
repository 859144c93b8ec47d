#include "Utilities/TsJSONWriter.h"

#import <Foundation/Foundation.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cmath>

#include "Base/TsNumberText.h"
#include "Base/TsString.h"

namespace {

// Each function returns false once it has set `failure_`.
class Writer {
 public:
  [[nodiscard]] Result<std::string> Write(id container) {
    if (!Value(container, 1)) return tl::unexpected(failure_);
    return std::string(text_.GetString(), text_.GetSize());
  }

 private:
  bool Refuse(NSString* reason, int code = kTsJSONError) {
    failure_ = {code, TsStdString(reason)};
    return false;
  }

  bool Value(id value, std::size_t level) {
    if ([value isKindOfClass:string_]) return String(value);
    if (object_getClass(value) == boolean_) return json_.Bool([value boolValue]);
    if ([value isKindOfClass:number_]) return Number(value);
    if (value == null_) return json_.Null();
    const bool isArray = [value isKindOfClass:array_];
    if (!isArray && ![value isKindOfClass:dictionary_]) {
      return Refuse([NSString stringWithFormat:@"JSON has no form for objects of the class %@", [value class]]);
    }
    if (level > kTsMostJSONLevels) return Refuse(@"it is nested too deeply", kTsJSONNestedTooDeeply);
    return isArray ? Array(value, level) : Dictionary(value, level);
  }

  bool Array(NSArray* array, std::size_t level) {
    json_.StartArray();
    for (id element in array) {
      if (!Value(element, level + 1)) return false;
    }
    return json_.EndArray();
  }

  bool Dictionary(NSDictionary* dictionary, std::size_t level) {
    json_.StartObject();
    for (id key in dictionary) {
      if (![key isKindOfClass:string_]) return Refuse(@"it has a key that is not a string");
      if (!String(key) || !Value([dictionary objectForKey:key], level + 1)) return false;
    }
    return json_.EndObject();
  }

  bool Number(NSNumber* number) {
    switch ([number objCType][0]) {
      case 'd':
      case 'f':
        return Double([number doubleValue]);
      case 'Q':
      case 'L':
        return json_.Uint64([number unsignedLongLongValue]);
      default:
        return json_.Int64([number longLongValue]);
    }
  }

  bool Double(double value) {
    if (!std::isfinite(value)) return Refuse(@"it contains a number that is infinite or not a number");
    const std::string text = TsNumberText(value);
    return json_.RawValue(text.data(), text.size(), rapidjson::kNumberType);
  }

  bool String(NSString* string) {
    const std::string text = TsStdString(string);
    return json_.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
  }

  // Kept, because GCC's run time looks a class up by its name wherever one is named.
  const Class string_ = [NSString class];
  const Class number_ = [NSNumber class];
  const Class boolean_ = object_getClass([NSNumber numberWithBool:YES]);
  const Class array_ = [NSArray class];
  const Class dictionary_ = [NSDictionary class];
  NSNull* const null_ = [NSNull null];

  rapidjson::StringBuffer text_;
  rapidjson::Writer<rapidjson::StringBuffer> json_{text_};
  Failure failure_;
};

bool IsContainer(id object) {
  return [object isKindOfClass:[NSArray class]] || [object isKindOfClass:[NSDictionary class]];
}

}  // namespace

Result<std::string> TsWriteJSON(id object) {
  if (!IsContainer(object)) return Fail(kTsJSONError, "it is neither an array nor a dictionary");
  @try {
    return Writer().Write(object);
  } @catch (NSException* exception) {
    return Fail(kTsJSONError, TsStdString([exception reason]));
  }
}
