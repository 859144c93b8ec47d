#pragma once

#include <map>

#import "Migration/TsManagedObject.h"

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
