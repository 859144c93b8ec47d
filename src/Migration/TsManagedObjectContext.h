#pragma once

#import <Foundation/Foundation.h>

#include <memory>
#include <span>
#include <vector>

#include "Base/Ref.h"
#include "Migration/TsManagedObject.h"
#include "Migration/TsStoreFile.h"

// The objects of one store, each of them once. One thread. Failures are told by an NSError, which may be null.
@interface TsManagedObjectContext : NSObject {
 @private
  std::span<const TsEntity> model_;
  std::unique_ptr<TsStoreFile> store_;
  std::vector<Ref<TsManagedObject>> objects_;  // by their numbers; made when somebody asks
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

// null when there is none.
- (TsStoreFile*)store;

- (TsManagedObject*)objectFor:(TsStoreObject&)object;

@end
