#pragma once

#import "Migration/TsGoogleAppIdentifier.h"
#import "Migration/TsPersistence.h"

@class TsWorkspaceState;

// An application that was open in a workspace, and where in it the user was.
@interface TsGoogleAppState : TsManagedObject

@property(nonatomic, readonly) TsWorkspaceState* workspaceState;

@end

@interface TsGoogleAppState (Attributes)
@property(nonatomic, copy) NSString* identifier;  // the text form of a TsGoogleAppIdentifier
@property(nonatomic, copy) NSString* url;
@end

// A window of the previous version with its tabs.
@interface TsWorkspaceState : TsManagedObject

@property(nonatomic, readonly) NSOrderedSet* appStates;

// As the last one.
- (TsGoogleAppState*)addAppStateWithIdentifier:(TsGoogleAppIdentifier*)identifier;

@end

@interface TsWorkspaceState (Attributes)
@property(nonatomic, copy) NSNumber* active;  // a boolean
@property(nonatomic, copy) NSDate* lastUpdatedAt;
@end

// The workspaces of the previous version. A failure to write is logged too. One thread.
@interface TsWorkspaceStates : TsPersistence

// The most recently updated comes first.
- (NSArray*)all;

- (TsWorkspaceState*)insertNewWorkspaceState;
- (void)deleteWorkspaceState:(TsWorkspaceState*)state;

// Makes and saves one if the store has none.
- (TsWorkspaceState*)activeWorkspaceState;

// No other one is active then.
- (void)setActiveWorkspaceState:(TsWorkspaceState*)state;

// With several matches, the one in the active workspace, or else in the most recently updated one; nil if missing.
- (TsGoogleAppState*)findFirstGoogleAppStateByAppIdentifier:(TsGoogleAppIdentifier*)identifier;

- (void)deleteGoogleAppState:(TsGoogleAppState*)state;

// Writes all changes to the file, or forgets them when that fails.
- (void)store:(id)sender;

@end
