#import "Migration/TsManagedObject.h"

#import <objc/runtime.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>

#include "Base/TsString.h"
#import "Migration/TsManagedObjectContext.h"
#include "Migration/TsStoreValue.h"
#include "Utilities/TsJSON.h"

namespace {

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

// "setOrder:" for "order".
std::string SetterOf(std::string_view name) {
  std::string setter = "set" + std::string(name) + ":";
  setter[3] = static_cast<char>(setter[3] - 'a' + 'A');
  return setter;
}

}  // namespace

@implementation TsManagedObject

@synthesize managedObjectContext = context_;

// At once rather than when they are missed, which Foundation's key-value coding would not be told of everywhere.
+ (void)initialize {
  static const auto kAccessors = MakeAccessors(std::make_index_sequence<kTsMostAttributes>());
  const TsEntity* entity = TsEntityOfClass(class_getName(self));
  if (entity == nullptr) return;
  for (std::size_t i = 0; i < entity->attributes.size(); ++i) {
    const std::string name(entity->attributes[i].name);
    class_addMethod(self, sel_registerName(name.c_str()), kAccessors[i].get, "@@:");
    class_addMethod(self, sel_registerName(SetterOf(name).c_str()), kAccessors[i].set, "v@:@");
  }
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

- (NSDictionary*)dictionaryWithValues {
  if (context_ == nil) return nil;
  TsExportText json;
  [self exportTo:json];
  return TsConvertFromJSONString(TsNSString(json.text), nullptr);
}

- (void)exportTo:(TsExportText&)json {
  json.Put("{}");
}

- (Ref<NSObject>)newValueOfAttribute:(std::size_t)attribute {
  if (context_ == nil) return nullptr;
  std::string buffer;
  const auto text = [context_ store]->Value(*object_, attribute, buffer);
  return text ? TsNewStoreValue(object_->entity->attributes[attribute].type, *text) : nullptr;
}

- (void)setValue:(id)value ofAttribute:(std::size_t)attribute {
  if (context_ == nil) return;
  [context_ store]->SetValue(*object_, attribute, TsStoreValueText(object_->entity->attributes[attribute].type, value));
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
