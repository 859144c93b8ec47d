#import "Migration/TsManagedObject.h"

#import <objc/runtime.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

#include "Base/TsLog.h"
#include "Base/TsNumberText.h"
#include "Base/TsString.h"

namespace {

constexpr int kNoStore = 134080;  // of the Cocoa error domain

// ---- Values and the texts by which a store keeps them: dates as seconds since 2001, data as Base64

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

// NSNumber, NSString, NSDate or NSData, after the model's type; nil when `text` is no such value. A number is a boolean
// when the store or, where that says nothing, the model calls it one and it is 0 or 1.
Ref<NSObject> NewStoreValue(TsAttributeType type, std::string_view storedType, std::string_view text) {
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

std::string StoreValueText(TsAttributeType type, id value) {
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

// ---- Objects

BOOL Report(const Failure& failure, NSError** error) {
  if (error != nullptr) {
    *error = [NSError errorWithDomain:NSCocoaErrorDomain
                                 code:failure.code
                             userInfo:@{NSLocalizedDescriptionKey : TsNSString(failure.message)}];
  }
  return NO;
}

BOOL ReportNoStore(NSError** error) { return Report({kNoStore, "There is no store."}, error); }

std::string ClassOf(const TsEntity& entity) { return "Ts" + std::string(entity.name); }

// nullptr for the classes above those of the entities.
const TsEntity* EntityOf(Class type) {
  const TsEntity* entity = TsEntityNamed(std::string_view(class_getName(type)).substr(2));
  return entity != nullptr && ClassOf(*entity) == class_getName(type) ? entity : nullptr;
}

// "setOrder:" for "order".
std::string SetterOf(std::string_view name) {
  std::string setter = "set" + std::string(name) + ":";
  setter[3] = static_cast<char>(setter[3] - 'a' + 'A');
  return setter;
}

const TsRelationship& Named(const TsEntity* entity, std::string_view name) {
  const auto all = entity->relationships;
  return *std::find_if(all.begin(), all.end(), [&](const TsRelationship& each) { return each.name == name; });
}

Ref<NSMutableDictionary> NewValues(const TsStoreFile& store, const std::string& identifier, const TsEntity& entity) {
  auto values = Adopt([[NSMutableDictionary alloc] initWithCapacity:entity.attributes.size()]);
  for (const auto& [attribute, type, text] : store.Values(identifier, entity)) {
    const auto value = NewStoreValue(attribute->type, type, text);
    if (value) [values setObject:value forKey:TsNSString(attribute->name)];
  }
  return values;
}

// An object as it leaves its store.
Ref<NSMutableDictionary> NewExport(const TsStoreFile& store, const std::string& identifier, const TsEntity& entity) {
  auto exported = NewValues(store, identifier, entity);
  if ([exported count] == entity.attributes.size()) return exported;
  for (const TsAttribute& attribute : entity.attributes) {
    NSString* name = TsNSString(attribute.name);
    if ([exported objectForKey:name] == nil) [exported setObject:[NSNull null] forKey:name];
  }
  return exported;
}

id Get(TsManagedObject* self, SEL accessor) { return [[self values] objectForKey:NSStringFromSelector(accessor)]; }

void Set(TsManagedObject* self, SEL accessor, id value) {
  if ([self values] == nil) return;
  for (const TsAttribute& attribute : self->_entity->attributes) {
    if (SetterOf(attribute.name) != sel_getName(accessor)) continue;
    const auto text = value != nil ? std::optional(StoreValueText(attribute.type, value)) : std::nullopt;
    self->_context->_store->SetValue(self->_identifier, attribute, text);
    self->_values = nullptr;
  }
}

}  // namespace

@interface TsManagedObjectContext ()
- (TsManagedObject*)object:(const std::string&)identifier of:(const TsEntity&)entity;
@end

@implementation TsManagedObject

@synthesize managedObjectContext = _context;

// At once, because Foundation's key-value coding does not ask for methods that are missing.
+ (void)initialize {
  const TsEntity* entity = EntityOf(self);
  if (entity == nullptr) return;
  for (const TsAttribute& attribute : entity->attributes) {
    const std::string name(attribute.name);
    class_addMethod(self, sel_registerName(name.c_str()), reinterpret_cast<IMP>(Get), "@@:");
    class_addMethod(self, sel_registerName(SetterOf(name).c_str()), reinterpret_cast<IMP>(Set), "v@:@");
  }
}

- (void)awakeFromInsert {
}

// nullptr for an object that has no values.
- (TsStoreFile*)store {
  if (_context == nil || _context->_store == nullptr) return nullptr;
  return _context->_store->Contains(_identifier) ? _context->_store.get() : nullptr;
}

- (NSDictionary*)values {
  const TsStoreFile* store = [self store];
  if (store == nullptr) return nil;
  if (!_values) _values = NewValues(*store, _identifier, *_entity);
  return _values;
}

- (NSDictionary*)dictionaryWithValues {
  const TsStoreFile* store = [self store];
  return store != nullptr ? NewExport(*store, _identifier, *_entity).Autoreleased() : nil;
}

- (NSArray*)objectsIn:(std::string_view)relationship {
  NSMutableArray* objects = [NSMutableArray array];
  const TsStoreFile* store = [self store];
  if (store == nullptr) return objects;
  const TsRelationship& description = Named(_entity, relationship);
  const TsEntity& destination = *TsEntityNamed(description.destination);
  for (const std::string& identifier : store->Related(_identifier, description)) {
    [objects addObject:[_context object:identifier of:destination]];
  }
  return objects;
}

- (id)objectIn:(std::string_view)relationship {
  return [[self objectsIn:relationship] firstObject];
}

- (id)insertObjectIn:(std::string_view)relationship {
  TsStoreFile* store = [self store];
  if (store == nullptr) return nil;
  const TsRelationship& description = Named(_entity, relationship);
  TsManagedObject* object = [_context insert:description.destination];
  store->Relate(_identifier, description, object->_identifier);
  store->Relate(object->_identifier, Named(object->_entity, description.inverse), _identifier);
  return object;
}

@end

NSArray* TsExported(NSArray* objects) {
  NSMutableArray* exported = [NSMutableArray arrayWithCapacity:[objects count]];
  for (TsManagedObject* object in objects) {
    @autoreleasepool {
      [exported addObject:[object dictionaryWithValues]];
    }
  }
  return exported;
}

@implementation TsManagedObjectContext

- (void)dealloc {
  [self removeStores];
  [super dealloc];
}

- (BOOL)addStoreAtPath:(NSString*)path error:(NSError**)error {
  auto store = TsStoreFile::Open(TsStdString(path));
  if (!store) return Report(store.error(), error);
  [self removeStores];
  _store = std::move(*store);
  return YES;
}

- (void)removeStores {
  // Objects may outlive their context.
  for (const auto& [identifier, object] : _objects) object.get()->_context = nil;
  _objects.clear();
  _store.reset();
}

- (NSArray*)fetch:(std::string_view)name error:(NSError**)error {
  if (_store == nullptr) {
    ReportNoStore(error);
    return nil;
  }
  const TsEntity& entity = *TsEntityNamed(name);
  NSMutableArray* objects = [NSMutableArray array];
  for (const std::string& identifier : _store->Objects(entity)) [objects addObject:[self object:identifier of:entity]];
  return objects;
}

- (id)insert:(std::string_view)name {
  if (_store == nullptr) return nil;
  const TsEntity& entity = *TsEntityNamed(name);
  TsManagedObject* object = [self object:_store->Insert(entity) of:entity];
  [object awakeFromInsert];
  return object;
}

- (void)deleteObject:(TsManagedObject*)object {
  if ([self contains:object]) _store->Delete(object->_identifier, *object->_entity);
}

- (BOOL)contains:(TsManagedObject*)object {
  return object != nil && object->_context == self && _store->Contains(object->_identifier);
}

- (BOOL)hasChanges {
  return _store != nullptr && _store->HasChanges();
}

- (BOOL)save:(NSError**)error {
  if (_store == nullptr) return ReportNoStore(error);
  const auto saved = _store->Save();
  return saved ? YES : Report(saved.error(), error);
}

- (void)rollback {
  if (_store != nullptr) _store->Rollback();
  for (const auto& [identifier, object] : _objects) object.get()->_values = nullptr;
}

- (TsManagedObject*)object:(const std::string&)identifier of:(const TsEntity&)entity {
  auto& known = _objects[identifier];
  if (known) return known;
  known = Adopt<TsManagedObject>([[objc_getClass(ClassOf(entity).c_str()) alloc] init]);
  TsManagedObject* object = known;
  object->_context = self;
  object->_entity = &entity;
  object->_identifier = identifier;
  return object;
}

@end

@implementation TsPersistence

- (instancetype)initWithPath:(NSString*)path {
  self = [super init];
  if (self) {
    _context = Adopt([[TsManagedObjectContext alloc] init]);
    NSError* error = nil;
    if (![self attachPersistencePath:path error:&error]) TsLogWarning(@"Couldn't attach persistence. %@", error);
  }
  return self;
}

- (TsManagedObjectContext*)context {
  return _context;
}

- (BOOL)attachPersistencePath:(NSString*)path error:(NSError**)error {
  return [_context addStoreAtPath:path error:error];
}

- (BOOL)detachPersistence:(NSError**)error {
  [_context removeStores];
  return YES;
}

- (NSArray*)fetch:(std::string_view)entity forQuery:(NSString*)query {
  NSError* error = nil;
  NSArray* objects = [_context fetch:entity error:&error];
  if (objects == nil) TsLogWarning(@"Could not execute %@ query. (%@)", query, error);
  return objects;
}

@end

double TsSortKey(NSNumber* number) {
  return number != nil ? [number doubleValue] : -std::numeric_limits<double>::infinity();
}

double TsSortKey(NSDate* date) {
  return date != nil ? [date timeIntervalSinceReferenceDate] : -std::numeric_limits<double>::infinity();
}
