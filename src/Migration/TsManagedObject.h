#pragma once

#import <Foundation/Foundation.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "Base/Ref.h"
#include "Migration/TsStoreFile.h"

@class TsManagedObjectContext;

// An object of a store. Its class has accessors for every attribute of its entity ("order", "setOrder:"): NSNumber,
// NSString, NSDate or NSData, nil when there is no value. An object that is deleted, or whose context has lost its
// store, has no values and takes none.
@interface TsManagedObject : NSObject {
 @package
  TsManagedObjectContext* _context;
  const TsEntity* _entity;
  std::string _identifier;
  Ref<NSMutableDictionary> _values;  // as they were read; nil until they are asked for, and after each change
}

// Not retained: contexts own their objects. nil when the context is gone.
@property(nonatomic, readonly) TsManagedObjectContext* managedObjectContext;

// A new object's first values, for subclasses.
- (void)awakeFromInsert;

// Every attribute that has a value, by its name.
- (NSDictionary*)values;

// The object as it leaves its store: every attribute, null for those without a value. nil once there are none.
- (NSDictionary*)dictionaryWithValues;

// The objects of a relationship, in the order of the store.
- (NSArray*)objectsIn:(std::string_view)relationship;

// The one of a to-one relationship.
- (id)objectIn:(std::string_view)relationship;

// A new object of the relationship's entity, as the last one.
- (id)insertObjectIn:(std::string_view)relationship;

@end

// The -dictionaryWithValues of each object; all must have values. -valueForKey: would take as long to find the method
// as the method takes.
[[nodiscard]] NSArray* TsExported(NSArray* objects);

// The objects of one store, each of them once. One thread. `error` may be null.
@interface TsManagedObjectContext : NSObject {
 @package
  std::unique_ptr<TsStoreFile> _store;
  std::unordered_map<std::string, Ref<TsManagedObject>> _objects;  // by identifier; made on demand
}

- (BOOL)addStoreAtPath:(NSString*)path error:(NSError**)error;

- (void)removeStores;

// The entity's objects; nil when there is no store.
- (NSArray*)fetch:(std::string_view)entity error:(NSError**)error;

// nil when there is no store.
- (id)insert:(std::string_view)entity;

- (void)deleteObject:(TsManagedObject*)object;

// Whether the object is one of ours, and not deleted.
- (BOOL)contains:(TsManagedObject*)object;

@property(nonatomic, readonly) BOOL hasChanges;

- (BOOL)save:(NSError**)error;

- (void)rollback;

@end

// A store of the previous version: a context, and the file behind it if there is one. A failure to read gives an empty
// result and a log line. Abstract; one thread.
@interface TsPersistence : NSObject {
 @protected
  Ref<TsManagedObjectContext> _context;
}

@property(nonatomic, readonly) TsManagedObjectContext* context;

// Without a store if `path` has no file.
- (instancetype)initWithPath:(NSString*)path;

- (BOOL)attachPersistencePath:(NSString*)path error:(NSError**)error;
- (BOOL)detachPersistence:(NSError**)error;

// The entity's objects; nil, and a line in the log about `query`, when they can't be read.
- (NSArray*)fetch:(std::string_view)entity forQuery:(NSString*)query;

@end

// The objects of `array` by their keys; equal ones keep their order. Autoreleased.
template <typename KeyOf>
[[nodiscard]] NSArray* TsSorted(NSArray* array, const KeyOf& keyOf) {
  std::multimap<decltype(keyOf(nil)), id> byKey;
  for (id object in array) byKey.emplace(keyOf(object), object);
  NSMutableArray* sorted = [NSMutableArray arrayWithCapacity:byKey.size()];
  for (const auto& [key, object] : byKey) [sorted addObject:object];
  return sorted;
}

// Objects without a value come first.
[[nodiscard]] double TsSortKey(NSNumber* number);
[[nodiscard]] double TsSortKey(NSDate* date);
