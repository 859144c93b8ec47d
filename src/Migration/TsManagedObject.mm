#import "Migration/TsManagedObject.h"

#import <objc/runtime.h>

#include <algorithm>
#include <optional>
#include <span>
#include <vector>

#include "Base/TsString.h"
#import "Migration/TsManagedObjectContext.h"
#include "Migration/TsStoreValue.h"

namespace {

NSString* KeyOf(const TsAttribute& attribute) { return TsNSString(attribute.name); }

// "setOrder:" for "order".
std::string SetterOf(std::string_view name) {
  std::string setter = "set" + std::string(name) + ":";
  setter[3] = static_cast<char>(setter[3] - 'a' + 'A');
  return setter;
}

template <typename Property>
const Property& Named(std::span<const Property> properties, std::string_view name) {
  return *std::find_if(properties.begin(), properties.end(), [&](const auto& each) { return each.name == name; });
}

const TsAttribute& AttributeOf(const TsEntity& entity, SEL accessor) {
  const std::string_view name = sel_getName(accessor);
  return *std::find_if(entity.attributes.begin(), entity.attributes.end(),
                       [&](const TsAttribute& each) { return each.name == name || SetterOf(each.name) == name; });
}

id Get(TsManagedObject* self, SEL accessor) { return [self valueForAccessor:accessor]; }

void Set(TsManagedObject* self, SEL accessor, id value) { [self setValue:value forAccessor:accessor]; }

}  // namespace

@implementation TsManagedObject

@synthesize managedObjectContext = _context;

// At once, because Foundation's key-value coding does not ask for methods that are missing.
+ (void)initialize {
  const TsEntity* entity = TsEntityOfClass(class_getName(self));
  if (entity == nullptr) return;
  for (const TsAttribute& attribute : entity->attributes) {
    const std::string name(attribute.name);
    class_addMethod(self, sel_registerName(name.c_str()), reinterpret_cast<IMP>(Get), "@@:");
    class_addMethod(self, sel_registerName(SetterOf(name).c_str()), reinterpret_cast<IMP>(Set), "v@:@");
  }
}

- (instancetype)initWithContext:(TsManagedObjectContext*)context
                         entity:(const TsEntity&)entity
                     identifier:(const std::string&)identifier {
  self = [super init];
  if (self) {
    _context = context;
    _entity = &entity;
    _identifier = identifier;
  }
  return self;
}

- (const std::string&)storeIdentifier {
  return _identifier;
}

- (const TsEntity&)storeEntity {
  return *_entity;
}

- (void)contextIsGone {
  _context = nil;
}

// nullptr for an object that has no values.
- (TsStoreFile*)store {
  TsStoreFile* store = [_context store];
  return store != nullptr && store->Contains(_identifier) ? store : nullptr;
}

- (void)awakeFromInsert {
}

- (id)valueForAccessor:(SEL)accessor {
  const TsAttribute& attribute = AttributeOf(*_entity, accessor);
  const TsStoreFile* store = [self store];
  const auto value = store != nullptr ? store->ValueOf(_identifier, attribute) : std::nullopt;
  return value ? TsNewStoreValue(attribute.type, value->type, value->text).Autoreleased() : nil;
}

- (void)setValue:(id)value forAccessor:(SEL)accessor {
  TsStoreFile* store = [self store];
  if (store == nullptr) return;
  const TsAttribute& attribute = AttributeOf(*_entity, accessor);
  if (value == nil) return store->SetValue(_identifier, attribute, std::nullopt);
  store->SetValue(_identifier, attribute, TsStoreValueText(attribute.type, value));
}

- (NSMutableDictionary*)values {
  TsStoreFile* store = [self store];
  if (store == nullptr) return nil;
  NSMutableDictionary* values = [NSMutableDictionary dictionaryWithCapacity:_entity->attributes.size()];
  store->ForEachValue(_identifier, *_entity, [&](const TsAttribute& attribute, const TsStoreFile::Value& stored) {
    const auto value = TsNewStoreValue(attribute.type, stored.type, stored.text);
    if (value) [values setObject:value forKey:KeyOf(attribute)];
  });
  return values;
}

- (NSDictionary*)dictionaryWithValues {
  NSMutableDictionary* values = [self values];
  for (const TsAttribute& attribute : _entity->attributes) {
    NSString* key = KeyOf(attribute);
    if ([values objectForKey:key] == nil) [values setObject:[NSNull null] forKey:key];
  }
  return values;
}

- (std::vector<std::string>)identifiersIn:(std::string_view)relationship {
  const TsStoreFile* store = [self store];
  if (store == nullptr) return {};
  return store->Related(_identifier, Named(_entity->relationships, relationship));
}

- (NSArray*)objectsIn:(std::string_view)relationship {
  const TsRelationship& description = Named(_entity->relationships, relationship);
  NSMutableArray* objects = [NSMutableArray array];
  for (const std::string& identifier : [self identifiersIn:relationship]) {
    [objects addObject:[_context object:identifier of:description.destination]];
  }
  return objects;
}

- (id)objectIn:(std::string_view)relationship {
  NSArray* objects = [self objectsIn:relationship];
  return [objects count] > 0 ? [objects objectAtIndex:0] : nil;
}

- (NSUInteger)countIn:(std::string_view)relationship {
  return [self identifiersIn:relationship].size();
}

- (id)insertObjectIn:(std::string_view)relationship {
  TsStoreFile* store = [self store];
  if (store == nullptr) return nil;
  const TsRelationship& description = Named(_entity->relationships, relationship);
  TsManagedObject* object = [_context insert:description.destination];
  store->Relate(_identifier, description, [object storeIdentifier]);
  store->Relate([object storeIdentifier], Named([object storeEntity].relationships, description.inverse), _identifier);
  return object;
}

@end
