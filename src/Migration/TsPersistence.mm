#import "Migration/TsPersistence.h"

#include <limits>

#include "Base/TsLog.h"

@implementation TsPersistence

- (instancetype)initWithPath:(NSString*)path {
  self = [super init];
  if (self) {
    _context = Adopt([[TsManagedObjectContext alloc] init]);
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

- (NSArray*)fetch:(std::string_view)entity forQuery:(NSString*)query {
  NSError* error = nil;
  NSArray* objects = [_context fetch:entity error:&error];
  if (objects == nil) TsLogWarning(@"Could not execute %@ query. (%@)", query, error);
  return objects;
}

@end

double TsSortKey(NSNumber* number) {
  return number != nil ? [number doubleValue] : -std::numeric_limits<double>::infinity();
}

double TsSortKey(NSDate* date) {
  return date != nil ? [date timeIntervalSinceReferenceDate] : -std::numeric_limits<double>::infinity();
}
