#import "Migration/TsPersistence.h"

#include "Base/TsLog.h"

@implementation TsPersistence

- (instancetype)initWithPath:(NSString*)path model:(std::span<const TsEntity>)model {
  if ((self = [super init]) != nil) {
    context_ = Adopt([[TsManagedObjectContext alloc] initWithModel:model]);
    NSError* error = nil;
    if (![self attachPersistencePath:path error:&error]) TsLogWarning(@"Couldn't attach persistence. %@", error);
  }
  return self;
}

- (TsManagedObjectContext*)context {
  return context_;
}

- (BOOL)attachPersistencePath:(NSString*)path error:(NSError**)error {
  return [context_ addStoreAtPath:path error:error];
}

- (BOOL)detachPersistence:(NSError**)error {
  [context_ removeStores];
  return YES;
}

@end
