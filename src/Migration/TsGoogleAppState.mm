#import "Migration/TsGoogleAppState.h"

@implementation TsGoogleAppState

@dynamic identifier, url;

- (TsWorkspaceState*)workspaceState {
  return [self objectIn:"workspaceState"];
}

@end
