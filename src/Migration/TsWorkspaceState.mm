#import "Migration/TsWorkspaceState.h"

#import "Migration/TsGoogleAppIdentifier.h"
#import "Migration/TsGoogleAppState.h"

@implementation TsWorkspaceState

@dynamic active, lastUpdatedAt;

- (void)awakeFromInsert {
  [self setLastUpdatedAt:[NSDate date]];
}

- (NSOrderedSet*)appStates {
  return [NSOrderedSet orderedSetWithArray:[self objectsIn:"appStates"]];
}

- (TsGoogleAppState*)addAppStateWithIdentifier:(TsGoogleAppIdentifier*)identifier {
  TsGoogleAppState* state = [self insertObjectIn:"appStates"];
  [state setIdentifier:[identifier description]];
  return state;
}

@end
