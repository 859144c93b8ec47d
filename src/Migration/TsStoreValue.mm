#import "Migration/TsStoreValue.h"

#include <array>
#include <charconv>
#include <cstdint>

#include "Base/TsString.h"
#include "Migration/TsStoreText.h"
#include "Platform/FoundationValues.h"

namespace platform = tessaro::platform;

namespace {

Ref<NSNumber> NewNumber(std::string_view text) {
  if (const auto integer = TsNumberInStore<std::int64_t>(text)) return platform::NewNumber(*integer);
  const auto number = TsNumberInStore<double>(text);
  return number ? platform::NewNumber(*number) : Ref<NSNumber>();
}

Ref<NSNumber> NewBoolean(std::string_view text) {
  static const Ref<NSNumber> kYes = Retain([NSNumber numberWithBool:YES]);
  static const Ref<NSNumber> kNo = Retain([NSNumber numberWithBool:NO]);
  const auto value = TsBooleanInStore(text);
  if (!value) return nullptr;
  return *value ? kYes : kNo;
}

Ref<NSDate> NewDate(std::string_view text) {
  const auto seconds = TsNumberInStore<double>(text);
  if (!seconds) return nullptr;
  return Adopt([[NSDate alloc] initWithTimeIntervalSinceReferenceDate:*seconds]);
}

Ref<NSData> NewData(std::string_view base64) {
  NSData* characters = [NSData dataWithBytesNoCopy:const_cast<char*>(base64.data())
                                            length:base64.size()
                                      freeWhenDone:NO];
  return Adopt([[NSData alloc] initWithBase64EncodedData:characters
                                                 options:NSDataBase64DecodingIgnoreUnknownCharacters]);
}

std::string NumberText(NSNumber* number) {
  std::array<char, 32> text;
  const double value = [number doubleValue];
  const bool isInteger = value == static_cast<double>([number longLongValue]);
  const auto end = isInteger ? std::to_chars(text.begin(), text.end(), [number longLongValue]).ptr
                             : std::to_chars(text.begin(), text.end(), value).ptr;
  return {text.begin(), end};
}

// As the framework writes it.
std::string DateText(NSDate* date) {
  constexpr int kDecimals = 20;
  std::array<char, 512> text;
  const auto end = std::to_chars(text.begin(), text.end(), [date timeIntervalSinceReferenceDate],
                                 std::chars_format::fixed, kDecimals);
  return {text.begin(), end.ptr};
}

}  // namespace

Ref<NSObject> TsNewStoreValue(TsAttributeType type, std::string_view text) {
  switch (type) {
    case TsAttributeType::Number:
      return Adopt<NSObject>(NewNumber(text).Leak());
    case TsAttributeType::Boolean:
      return Adopt<NSObject>(NewBoolean(text).Leak());
    case TsAttributeType::Text:
      return Adopt<NSObject>(TsNewString(text).Leak());
    case TsAttributeType::Date:
      return Adopt<NSObject>(NewDate(text).Leak());
    case TsAttributeType::Data:
      return Adopt<NSObject>(NewData(text).Leak());
  }
}

std::optional<std::string> TsStoreValueText(TsAttributeType type, id value) {
  if (value == nil) return std::nullopt;
  switch (type) {
    case TsAttributeType::Number:
      return NumberText(value);
    case TsAttributeType::Boolean:
      return [value boolValue] ? "1" : "0";
    case TsAttributeType::Text:
      return TsStdString(value);
    case TsAttributeType::Date:
      return DateText(value);
    case TsAttributeType::Data:
      return TsStdString([value base64EncodedStringWithOptions:0]);
  }
}
