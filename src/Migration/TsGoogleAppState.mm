#import "Migration/TsGoogleAppState.h"

#import "Migration/TsExport.h"

@implementation TsGoogleAppState

@dynamic identifier, url;

- (TsWorkspaceState*)workspaceState {
  return [self objectIn:"workspaceState"];
}

- (NSDictionary*)dictionaryWithValues {
  return TsExported({{@"identifier", [self identifier]}, {@"url", [self url]}});
}

@end
