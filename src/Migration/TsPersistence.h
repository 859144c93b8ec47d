#pragma once

#import "Migration/TsManagedObjectContext.h"

// A store of the previous version: a context, and the file behind it if there is one. What can't be read is logged, and
// the result is empty. Abstract; one thread.
@interface TsPersistence : NSObject {
 @protected
  Ref<TsManagedObjectContext> _context;
}

@property(nonatomic, readonly) TsManagedObjectContext* context;

// Without a store if `path` has no file.
- (instancetype)initWithPath:(NSString*)path model:(std::span<const TsEntity>)model;

- (BOOL)attachPersistencePath:(NSString*)path error:(NSError**)error;
- (BOOL)detachPersistence:(NSError**)error;

@end
