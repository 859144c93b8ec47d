#import "Migration/TsWorkspaceStates.h"

#include <utility>

#include "Base/TsLog.h"

namespace {

bool IsActive(TsWorkspaceState* state) { return [[state active] boolValue] != NO; }

}  // namespace

@implementation TsGoogleAppState

- (TsWorkspaceState*)workspaceState {
  return [self objectIn:"workspaceState"];
}

@end

@implementation TsWorkspaceState

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

@implementation TsWorkspaceStates

- (NSArray*)all {
  NSArray* states = [self fetch:"WorkspaceState" forQuery:@"TsWorkspaceStates#all"];
  return TsSorted(states, [](TsWorkspaceState* state) { return -TsSortKey([state lastUpdatedAt]); });
}

- (TsWorkspaceState*)insertNewWorkspaceState {
  return [_context insert:"WorkspaceState"];
}

- (void)deleteWorkspaceState:(TsWorkspaceState*)state {
  [_context deleteObject:state];
}

- (TsWorkspaceState*)activeWorkspaceState {
  NSArray* states = [self fetch:"WorkspaceState" forQuery:@"TsWorkspaceStates#activeWorkspaceState"];
  if (states == nil) return nil;
  for (TsWorkspaceState* state in states) {
    if (IsActive(state)) return state;
  }
  TsWorkspaceState* state = [self insertNewWorkspaceState];
  [state setActive:[NSNumber numberWithInt:1]];
  [self store:nil];
  return state;
}

- (void)setActiveWorkspaceState:(TsWorkspaceState*)state {
  for (TsWorkspaceState* each in [self all]) [each setActive:[NSNumber numberWithInt:0]];
  [state setActive:[NSNumber numberWithInt:1]];
}

- (TsGoogleAppState*)findFirstGoogleAppStateByAppIdentifier:(TsGoogleAppIdentifier*)identifier {
  NSString* query =
      [NSString stringWithFormat:@"TsWorkspaceStates#findFirstGoogleAppStateByAppIdentifier:%@", identifier];
  NSMutableArray* found = [NSMutableArray array];
  for (TsGoogleAppState* state in [self fetch:"GoogleAppState" forQuery:query]) {
    if ([[state identifier] isEqualToString:[identifier description]]) [found addObject:state];
  }
  NSArray* sorted = TsSorted(found, [](TsGoogleAppState* state) {
    return std::pair(!IsActive([state workspaceState]), -TsSortKey([[state workspaceState] lastUpdatedAt]));
  });
  return [sorted firstObject];
}

- (void)deleteGoogleAppState:(TsGoogleAppState*)state {
  [_context deleteObject:state];
}

- (void)store:(id)sender {
  if (![_context hasChanges]) return;
  NSError* error = nil;
  if ([_context save:&error]) return;
  TsLogError(@"%@\n%@", error, [NSThread callStackSymbols]);
  [_context rollback];
}

@end
