#import "Migration/TsManagedObject.h"

#import <objc/runtime.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

#import "Migration/TsManagedObjectContext.h"
#include "Platform/FoundationValues.h"
#include "Utilities/TsString.h"

namespace platform = tessaro::platform;

namespace {

template <typename Number>
std::optional<Number> Parsed(std::string_view text) {
  Number number;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

Ref<NSNumber> NewNumber(std::string_view text) {
  if (const auto integer = Parsed<std::int64_t>(text)) return platform::NewNumber(*integer);
  const auto number = Parsed<double>(text);
  return number && std::isfinite(*number) ? platform::NewNumber(*number) : Ref<NSNumber>();
}

Ref<NSNumber> NewBoolean(std::string_view text) {
  const auto number = Parsed<int>(text);
  const bool isTrue = number ? *number != 0 : text == "true" || text == "YES";
  if (!number && !isTrue && text != "false" && text != "NO") return nullptr;
  return Retain([NSNumber numberWithBool:isTrue]);
}

Ref<NSDate> NewDate(std::string_view text) {
  const auto seconds = Parsed<double>(text);
  if (!seconds || !std::isfinite(*seconds)) return nullptr;
  return Adopt([[NSDate alloc] initWithTimeIntervalSinceReferenceDate:*seconds]);
}

Ref<NSData> NewData(std::string_view base64) {
  NSData* characters = [NSData dataWithBytesNoCopy:const_cast<char*>(base64.data())
                                            length:base64.size()
                                      freeWhenDone:NO];
  return Adopt([[NSData alloc] initWithBase64EncodedData:characters
                                                 options:NSDataBase64DecodingIgnoreUnknownCharacters]);
}

Ref<NSObject> NewValue(TsAttributeType type, std::string_view text) {
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

std::optional<std::string> TextOf(TsAttributeType type, id value) {
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

template <std::size_t attribute>
id Get(TsManagedObject* self, SEL) {
  return [self newValueOfAttribute:attribute].Autoreleased();
}

template <std::size_t attribute>
void Set(TsManagedObject* self, SEL, id value) {
  [self setValue:value ofAttribute:attribute];
}

struct Accessors {
  IMP get;
  IMP set;
};

template <std::size_t... attributes>
std::array<Accessors, sizeof...(attributes)> MakeAccessors(std::index_sequence<attributes...>) {
  return {Accessors{reinterpret_cast<IMP>(Get<attributes>), reinterpret_cast<IMP>(Set<attributes>)}...};
}

struct Accessor {
  std::size_t attribute;
  bool isSetter;
};

// "order", or "setOrder:".
bool IsSetterOf(std::string_view selector, std::string_view name) {
  return selector.size() == name.size() + 4 && selector.starts_with("set") && selector.ends_with(':') &&
         selector[3] == name[0] - 'a' + 'A' && selector.substr(4, name.size() - 1) == name.substr(1);
}

std::optional<Accessor> AccessorNamed(const TsEntity& entity, std::string_view selector) {
  for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
    const std::string_view name = entity.attributes[i].name;
    if (selector == name) return Accessor{i, false};
    if (IsSetterOf(selector, name)) return Accessor{i, true};
  }
  return std::nullopt;
}

}  // namespace

@implementation TsManagedObject

@synthesize managedObjectContext = context_;

+ (BOOL)resolveInstanceMethod:(SEL)selector {
  static const auto kAccessors = MakeAccessors(std::make_index_sequence<kTsMostAttributes>());
  const TsEntity* entity = TsEntityOfClass(class_getName(self));
  const auto accessor = entity != nullptr ? AccessorNamed(*entity, sel_getName(selector)) : std::nullopt;
  if (!accessor) return [super resolveInstanceMethod:selector];
  const auto [get, set] = kAccessors[accessor->attribute];
  return accessor->isSetter ? class_addMethod(self, selector, set, "v@:@")
                            : class_addMethod(self, selector, get, "@@:");
}

- (instancetype)initWithContext:(TsManagedObjectContext*)context object:(TsStoreObject&)object {
  if ((self = [super init]) != nil) {
    context_ = context;
    object_ = &object;
  }
  return self;
}

- (TsStoreObject*)storeObject {
  return object_;
}

- (void)contextIsGone {
  context_ = nil;
  object_ = nullptr;
}

- (void)awakeFromInsert {
}

- (Ref<NSObject>)newValueOfAttribute:(std::size_t)attribute {
  if (context_ == nil) return nullptr;
  std::string buffer;
  const auto text = [context_ store]->Value(*object_, attribute, buffer);
  return text ? NewValue(object_->entity->attributes[attribute].type, *text) : nullptr;
}

- (void)setValue:(id)value ofAttribute:(std::size_t)attribute {
  if (context_ == nil) return;
  [context_ store]->SetValue(*object_, attribute, TextOf(object_->entity->attributes[attribute].type, value));
}

- (NSArray*)objectsIn:(std::string_view)relationship {
  if (context_ == nil) return [NSArray array];
  const auto related = [context_ store]->Related(*object_, relationship);
  NSMutableArray* objects = [NSMutableArray arrayWithCapacity:related.size()];
  for (TsStoreObject* object : related) [objects addObject:[context_ objectFor:*object]];
  return objects;
}

- (id)objectIn:(std::string_view)relationship {
  if (context_ == nil) return nil;
  const auto related = [context_ store]->Related(*object_, relationship);
  return related.empty() ? nil : [context_ objectFor:*related.front()];
}

- (std::size_t)countIn:(std::string_view)relationship {
  return context_ != nil ? [context_ store]->Related(*object_, relationship).size() : 0;
}

- (id)insertObjectIn:(std::string_view)relationship {
  if (context_ == nil || object_->isDeleted) return nil;
  const auto& relationships = object_->entity->relationships;
  const auto found = std::find_if(relationships.begin(), relationships.end(),
                                  [&](const TsRelationship& each) { return each.name == relationship; });
  TsManagedObject* object = [context_ insert:found->destination];
  [context_ store]->Append(*object_, relationship, *[object storeObject]);
  return object;
}

@end
