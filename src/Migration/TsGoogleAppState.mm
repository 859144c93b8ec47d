#import "Migration/TsGoogleAppState.h"

#import "Migration/TsManagedObjectContext.h"

@implementation TsGoogleAppState

@dynamic identifier, url;

- (TsWorkspaceState*)workspaceState {
  return [self objectIn:"workspaceState"];
}

- (void)exportTo:(TsExportText&)json {
  static const TsExport kExport("TsGoogleAppState", {{"identifier"}, {"url"}});
  kExport.Open(json, *[[self managedObjectContext] store], *[self storeObject]);
  json.Put('}');
}

@end
