#import "Migration/TsGoogleAppState.h"

#import "Migration/TsExport.h"
#import "Migration/TsManagedObjectContext.h"

@implementation TsGoogleAppState

@dynamic identifier, url;

- (TsWorkspaceState*)workspaceState {
  return [self objectIn:"workspaceState"];
}

- (NSDictionary*)dictionaryWithValues {
  static const TsExport kExport("TsGoogleAppState", {{"identifier"}, {"url"}});
  if ([self managedObjectContext] == nil) return nil;
  return kExport.NewDictionary(*[[self managedObjectContext] store], *[self storeObject]).Autoreleased();
}

@end
