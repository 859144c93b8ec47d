#include "Utilities/TsJSONWriter.h"

#import <Foundation/Foundation.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "Base/TsNumberText.h"
#include "Base/TsString.h"

namespace {

// The letter of a two-character escape, or 0.
char ShortEscape(char character) {
  switch (character) {
    case '"':
    case '\\':
      return character;
    case '\b':
      return 'b';
    case '\f':
      return 'f';
    case '\n':
      return 'n';
    case '\r':
      return 'r';
    case '\t':
      return 't';
    default:
      return 0;
  }
}

bool NeedsEscape(char character) {
  return static_cast<unsigned char>(character) < 0x20 || character == '"' || character == '\\';
}

bool IsBoolean(id object) {
  static const Class boolean = object_getClass([NSNumber numberWithBool:YES]);
  return object_getClass(object) == boolean;
}

// Each function returns false once it has set `failure_`.
class Writer {
 public:
  [[nodiscard]] Result<std::string> Write(id container) {
    if (Value(container, 1)) return std::move(json_);
    return tl::unexpected(failure_);
  }

 private:
  bool Refuse(NSString* reason, int code = kTsJSONError) {
    failure_ = {code, TsStdString(reason)};
    return false;
  }

  bool Value(id value, std::size_t level) {
    if ([value isKindOfClass:[NSString class]]) return String(value);
    if (IsBoolean(value)) return Put([value boolValue] ? "true" : "false");
    if ([value isKindOfClass:[NSNumber class]]) return Number(value);
    if (value == [NSNull null]) return Put("null");
    const bool isArray = [value isKindOfClass:[NSArray class]];
    if (!isArray && ![value isKindOfClass:[NSDictionary class]]) {
      return Refuse([NSString stringWithFormat:@"JSON has no form for objects of the class %@", [value class]]);
    }
    if (level > kTsMostJSONLevels) return Refuse(@"it is nested too deeply", kTsJSONNestedTooDeeply);
    return isArray ? Array(value, level) : Dictionary(value, level);
  }

  bool Array(NSArray* array, std::size_t level) {
    json_ += '[';
    bool isFirst = true;
    for (id element in array) {
      if (!std::exchange(isFirst, false)) json_ += ',';
      if (!Value(element, level + 1)) return false;
    }
    return Put("]");
  }

  bool Dictionary(NSDictionary* dictionary, std::size_t level) {
    json_ += '{';
    bool isFirst = true;
    for (id key in dictionary) {
      if (![key isKindOfClass:[NSString class]]) return Refuse(@"it has a key that is not a string");
      if (!std::exchange(isFirst, false)) json_ += ',';
      String(key);
      json_ += ':';
      if (!Value([dictionary objectForKey:key], level + 1)) return false;
    }
    return Put("}");
  }

  bool Number(NSNumber* number) {
    switch ([number objCType][0]) {
      case 'd':
      case 'f':
        return Double([number doubleValue]);
      case 'Q':
      case 'L':
        return Put(std::to_string([number unsignedLongLongValue]));
      default:
        return Put(std::to_string([number longLongValue]));
    }
  }

  bool Double(double value) {
    if (!std::isfinite(value)) return Refuse(@"it contains a number that is infinite or not a number");
    return Put(TsNumberText(value));
  }

  bool String(NSString* string) {
    json_ += '"';
    const std::string text = TsStdString(string);
    std::string_view rest = text;
    while (!rest.empty()) {
      const auto escaped = std::find_if(rest.begin(), rest.end(), NeedsEscape);
      const auto length = static_cast<std::size_t>(escaped - rest.begin());
      json_ += rest.substr(0, length);
      rest.remove_prefix(length);
      if (rest.empty()) break;
      Escape(rest.front());
      rest.remove_prefix(1);
    }
    return Put("\"");
  }

  void Escape(char character) {
    constexpr std::string_view kHexDigits = "0123456789abcdef";
    json_ += '\\';
    if (const char letter = ShortEscape(character)) {
      json_ += letter;
    } else {
      json_ += {'u', '0', '0', kHexDigits[static_cast<unsigned char>(character) >> 4], kHexDigits[character & 0xF]};
    }
  }

  bool Put(std::string_view text) {
    json_ += text;
    return true;
  }

  std::string json_;
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
