#pragma once

#import "Migration/TsGoogleAppIdentifier.h"
#import "Migration/TsGoogleAppState.h"
#import "Migration/TsPersistence.h"
#import "Migration/TsWorkspaceState.h"

// The workspaces of the previous version. A failure gives an empty result and a log line.
// One thread.
@interface TsWorkspaceStates : TsPersistence

// Without a store if `path` has no file.
- (instancetype)initWithPath:(NSString*)path;

// The one that was updated last comes first.
- (NSArray*)all;

- (TsWorkspaceState*)insertNewWorkspaceState;
- (void)deleteWorkspaceState:(TsWorkspaceState*)state;

// Makes and saves one if the store has none.
- (TsWorkspaceState*)activeWorkspaceState;

// No other one is active then.
- (void)setActiveWorkspaceState:(TsWorkspaceState*)state;

// The one in the active workspace, or else in the workspace that was updated last; nil if missing.
- (TsGoogleAppState*)findFirstGoogleAppStateByAppIdentifier:(TsGoogleAppIdentifier*)identifier;

- (void)deleteGoogleAppState:(TsGoogleAppState*)state;

// Writes all changes to the file, or forgets them when that fails.
- (void)store:(id)sender;

@end
