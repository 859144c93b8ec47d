#import "Migration/TsStoreValue.h"

#include <charconv>

#include "Base/TsNumberText.h"
#include "Base/TsString.h"

namespace {

Ref<NSNumber> NewInteger(std::string_view text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return nullptr;
  return Adopt([[NSNumber alloc] initWithLongLong:number]);
}

Ref<NSNumber> NewNumber(bool isBoolean, std::string_view text) {
  if (isBoolean && (text == "1" || text == "true" || text == "YES")) return Retain([NSNumber numberWithBool:YES]);
  if (isBoolean && (text == "0" || text == "false" || text == "NO")) return Retain([NSNumber numberWithBool:NO]);
  if (auto integer = NewInteger(text)) return integer;
  const auto number = TsNumberInText(text);
  return number ? Adopt([[NSNumber alloc] initWithDouble:*number]) : nullptr;
}

Ref<NSDate> NewDate(std::string_view text) {
  const auto seconds = TsNumberInText(text);
  return seconds ? Adopt([[NSDate alloc] initWithTimeIntervalSinceReferenceDate:*seconds]) : nullptr;
}

Ref<NSData> NewData(std::string_view base64) {
  const auto text = TsNewString(base64);
  return Adopt([[NSData alloc] initWithBase64EncodedString:text options:NSDataBase64DecodingIgnoreUnknownCharacters]);
}

std::string NumberText(NSNumber* number) {
  const double value = [number doubleValue];
  const bool isInteger = value == static_cast<double>([number longLongValue]);
  return isInteger ? std::to_string([number longLongValue]) : TsNumberText(value);
}

}  // namespace

Ref<NSObject> TsNewStoreValue(TsAttributeType type, std::string_view storedType, std::string_view text) {
  switch (type) {
    case TsAttributeType::Int16:
    case TsAttributeType::Int32:
    case TsAttributeType::Int64:
    case TsAttributeType::Boolean:
      return NewNumber(storedType.empty() ? type == TsAttributeType::Boolean : storedType == "bool", text);
    case TsAttributeType::Text:
      return TsNewString(text);
    case TsAttributeType::Date:
      return NewDate(text);
    case TsAttributeType::Data:
      return NewData(text);
  }
}

std::string TsStoreValueText(TsAttributeType type, id value) {
  switch (type) {
    case TsAttributeType::Int16:
    case TsAttributeType::Int32:
    case TsAttributeType::Int64:
    case TsAttributeType::Boolean:
      return NumberText(value);
    case TsAttributeType::Text:
      return TsStdString(value);
    case TsAttributeType::Date:
      return TsNumberText([value timeIntervalSinceReferenceDate]);
    case TsAttributeType::Data:
      return TsStdString([value base64EncodedStringWithOptions:0]);
  }
}
