#pragma once

#import "Migration/TsManagedObjectContext.h"

// What both stores of the previous version are to their users: a context with a file behind it, if there is one. Each
// is a subclass. Whatever can't be read is told by the log and an empty result. One thread.
@interface TsPersistence : NSObject {
 @protected
  Ref<TsManagedObjectContext> context_;
}

@property(nonatomic, readonly) TsManagedObjectContext* context;

// Without a store when there is none at `path`.
- (instancetype)initWithPath:(NSString*)path model:(std::span<const TsEntity>)model;

- (BOOL)attachPersistencePath:(NSString*)path error:(NSError**)error;
- (BOOL)detachPersistence:(NSError**)error;

@end
