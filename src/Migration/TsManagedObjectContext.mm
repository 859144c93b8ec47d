#import "Migration/TsManagedObjectContext.h"

#include "Base/TsString.h"

namespace {

NSError* ErrorOf(const TsStoreError& error, NSString* path) {
  NSDictionary* information = [NSDictionary
      dictionaryWithObjectsAndKeys:TsNSString(error.reason), NSLocalizedDescriptionKey, path, NSFilePathErrorKey, nil];
  return [NSError errorWithDomain:NSCocoaErrorDomain code:error.code userInfo:information];
}

}  // namespace

@interface TsManagedObject (ForContext)

- (instancetype)initWithContext:(TsManagedObjectContext*)context object:(TsStoreObject&)object;
- (void)contextIsGone;

@end

@implementation TsManagedObjectContext

- (instancetype)initWithModel:(std::span<const TsEntity>)model {
  if ((self = [super init]) != nil) model_ = model;
  return self;
}

- (void)dealloc {
  [self removeStores];
  [super dealloc];
}

- (BOOL)addStoreAtPath:(NSString*)path error:(NSError**)error {
  TsStoreError reason;
  auto store = TsStoreFile::Open(TsStdString(path), model_, reason);
  if (store == nullptr) {
    if (error != nullptr) *error = ErrorOf(reason, path);
    return NO;
  }
  [self removeStores];
  store_ = std::move(store);
  return YES;
}

- (void)removeStores {
  // Somebody may still have one of them.
  for (const auto& object : objects_) [object contextIsGone];
  objects_.clear();
  store_.reset();
}

- (NSError*)noStore {
  return ErrorOf({134080, "There is no store."}, nil);
}

- (NSArray*)fetch:(std::string_view)entity error:(NSError**)error {
  if (store_ == nullptr) {
    if (error != nullptr) *error = [self noStore];
    return nil;
  }
  const auto found = store_->Objects(*TsEntityNamed(model_, entity));
  NSMutableArray* objects = [NSMutableArray arrayWithCapacity:found.size()];
  for (TsStoreObject* object : found) [objects addObject:[self objectFor:*object]];
  return objects;
}

- (id)insert:(std::string_view)entity {
  if (store_ == nullptr) return nil;
  TsManagedObject* object = [self objectFor:store_->Insert(*TsEntityNamed(model_, entity))];
  [object awakeFromInsert];
  return object;
}

- (void)deleteObject:(TsManagedObject*)object {
  if ([self contains:object]) store_->Delete(*[object storeObject]);
}

- (BOOL)contains:(TsManagedObject*)object {
  return object != nil && [object managedObjectContext] == self && ![object storeObject]->isDeleted;
}

- (BOOL)hasChanges {
  return store_ != nullptr && store_->HasChanges();
}

- (BOOL)save:(NSError**)error {
  TsStoreError reason;
  if (store_ != nullptr && store_->Save(reason)) return YES;
  if (error != nullptr) *error = store_ != nullptr ? ErrorOf(reason, nil) : [self noStore];
  return NO;
}

- (void)rollback {
  if (store_ != nullptr) store_->Rollback();
}

- (TsStoreFile*)store {
  return store_.get();
}

- (TsManagedObject*)objectFor:(TsStoreObject&)object {
  if (objects_.size() <= object.number) objects_.resize(store_->Size());
  auto& known = objects_[object.number];
  if (!known) {
    const Class entityClass = objc_getClass(object.entity->className);
    known = Adopt<TsManagedObject>([[entityClass alloc] initWithContext:self object:object]);
  }
  return known;
}

@end
