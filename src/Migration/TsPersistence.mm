#import "Migration/TsPersistence.h"

#include "Base/TsLog.h"

@implementation TsPersistence

- (instancetype)initWithPath:(NSString*)path model:(std::span<const TsEntity>)model {
  self = [super init];
  if (self) {
    _context = Adopt([[TsManagedObjectContext alloc] initWithModel:model]);
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

@end
