#pragma once

#import <Foundation/Foundation.h>

#include <memory>
#include <span>
#include <string>
#include <unordered_map>

#include "Base/Ref.h"
#import "Migration/TsManagedObject.h"
#include "Migration/TsStoreFile.h"

// The objects of one store, each of them once. One thread. `error` may be null.
@interface TsManagedObjectContext : NSObject {
 @private
  std::span<const TsEntity> _model;
  std::unique_ptr<TsStoreFile> _store;
  std::unordered_map<std::string, Ref<TsManagedObject>> _objects;  // by identifier; made on demand
}

// Without a store, so far.
- (instancetype)initWithModel:(std::span<const TsEntity>)model;

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

@interface TsManagedObjectContext (ForObjects)

// nullptr if missing.
- (TsStoreFile*)store;

- (TsManagedObject*)object:(const std::string&)identifier of:(std::string_view)entity;

@end
