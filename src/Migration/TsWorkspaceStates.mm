#import "Migration/TsWorkspaceStates.h"

#include "Base/TsLog.h"
#import "Migration/TsSorting.h"

namespace {

bool IsActive(TsWorkspaceState* state) { return [[state active] boolValue] != NO; }

bool ComesFirst(TsWorkspaceState* a, TsWorkspaceState* b) {
  return IsActive(a) != IsActive(b) ? IsActive(a) : TsSortKey([a lastUpdatedAt]) > TsSortKey([b lastUpdatedAt]);
}

}  // namespace

@implementation TsWorkspaceStates

- (instancetype)initWithPath:(NSString*)path {
  return [self initWithPath:path model:TsWorkspaceStatesModel()];
}

- (NSArray*)all {
  NSError* error = nil;
  NSArray* states = [_context fetch:"WorkspaceState" error:&error];
  if (states == nil) {
    TsLogWarning(@"Could not execute TsWorkspaceStates#all query. (%@)", error);
    return [NSArray array];
  }
  return TsSorted(states, [](TsWorkspaceState* state) { return -TsSortKey([state lastUpdatedAt]); });
}

- (TsWorkspaceState*)insertNewWorkspaceState {
  return [_context insert:"WorkspaceState"];
}

- (void)deleteWorkspaceState:(TsWorkspaceState*)state {
  [_context deleteObject:state];
}

- (TsWorkspaceState*)activeWorkspaceState {
  NSError* error = nil;
  NSArray* states = [_context fetch:"WorkspaceState" error:&error];
  if (states == nil) {
    TsLogWarning(@"Could not execute TsWorkspaceStates#activeWorkspaceState query. (%@)", error);
    return nil;
  }
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
  NSString* text = [identifier description];
  NSError* error = nil;
  NSArray* states = [_context fetch:"GoogleAppState" error:&error];
  if (states == nil) {
    TsLogWarning(@"Could not execute TsWorkspaceStates#findFirstGoogleAppStateByAppIdentifier:%@ query. (%@)", text,
                 error);
    return nil;
  }
  TsGoogleAppState* first = nil;
  for (TsGoogleAppState* state in states) {
    if (![[state identifier] isEqualToString:text]) continue;
    if (first == nil || ComesFirst([state workspaceState], [first workspaceState])) first = state;
  }
  return first;
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
