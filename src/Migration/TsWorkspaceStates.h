#pragma once

#import "Migration/TsGoogleAppIdentifier.h"
#import "Migration/TsGoogleAppState.h"
#import "Migration/TsPersistence.h"
#import "Migration/TsWorkspaceState.h"

// The workspaces of the previous version. Whatever can't be read or written is told by the log and an empty result.
// One thread.
@interface TsWorkspaceStates : TsPersistence

// Without a store when there is none at `path`.
- (instancetype)initWithPath:(NSString*)path;

// The one that was updated last comes first.
- (NSArray*)all;

- (TsWorkspaceState*)insertNewWorkspaceState;
- (void)deleteWorkspaceState:(TsWorkspaceState*)state;

// Makes and saves one when there is none.
- (TsWorkspaceState*)activeWorkspaceState;

// No other one is active then.
- (void)setActiveWorkspaceState:(TsWorkspaceState*)state;

// Of several, one in the active workspace, or else in the one that was updated last; nil when there is none.
- (TsGoogleAppState*)findFirstGoogleAppStateByAppIdentifier:(TsGoogleAppIdentifier*)identifier;

- (void)deleteGoogleAppState:(TsGoogleAppState*)state;

// Writes all changes to the file, or forgets them when that fails.
- (void)store:(id)sender;

@end
