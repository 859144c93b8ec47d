#import "Migration/TsManagedObjectContext.h"

#import <objc/runtime.h>

#include "Base/TsString.h"

namespace {

constexpr int kNoStore = 134080;  // of the Cocoa error domain

BOOL Report(const Failure& failure, NSError** error) {
  if (error != nullptr) {
    *error = [NSError errorWithDomain:NSCocoaErrorDomain
                                 code:failure.code
                             userInfo:@{NSLocalizedDescriptionKey : TsNSString(failure.message)}];
  }
  return NO;
}

BOOL ReportNoStore(NSError** error) { return Report({kNoStore, "There is no store."}, error); }

}  // namespace

@implementation TsManagedObjectContext

- (instancetype)initWithModel:(std::span<const TsEntity>)model {
  self = [super init];
  if (self) _model = model;
  return self;
}

- (void)dealloc {
  [self removeStores];
  [super dealloc];
}

- (BOOL)addStoreAtPath:(NSString*)path error:(NSError**)error {
  auto store = TsStoreFile::Open(TsStdString(path), _model);
  if (!store) return Report(store.error(), error);
  [self removeStores];
  _store = std::move(*store);
  return YES;
}

- (void)removeStores {
  // Objects may outlive their context.
  for (const auto& [identifier, object] : _objects) [object contextIsGone];
  _objects.clear();
  _store.reset();
}

- (NSArray*)fetch:(std::string_view)entity error:(NSError**)error {
  if (_store == nullptr) {
    ReportNoStore(error);
    return nil;
  }
  NSMutableArray* objects = [NSMutableArray array];
  for (const std::string& identifier : _store->Objects(*TsEntityNamed(_model, entity))) {
    [objects addObject:[self object:identifier of:entity]];
  }
  return objects;
}

- (id)insert:(std::string_view)entity {
  if (_store == nullptr) return nil;
  TsManagedObject* object = [self object:_store->Insert(*TsEntityNamed(_model, entity)) of:entity];
  [object awakeFromInsert];
  return object;
}

- (void)deleteObject:(TsManagedObject*)object {
  if ([self contains:object]) _store->Delete([object storeIdentifier], [object storeEntity]);
}

- (BOOL)contains:(TsManagedObject*)object {
  return object != nil && [object managedObjectContext] == self && _store->Contains([object storeIdentifier]);
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
}

- (TsStoreFile*)store {
  return _store.get();
}

- (TsManagedObject*)object:(const std::string&)identifier of:(std::string_view)entity {
  auto& known = _objects[identifier];
  if (!known) {
    const TsEntity& description = *TsEntityNamed(_model, entity);
    const Class entityClass = objc_getClass(description.className);
    known = Adopt<TsManagedObject>([[entityClass alloc] initWithContext:self entity:description identifier:identifier]);
  }
  return known;
}

@end
