#pragma once

#import "Migration/TsManagedObject.h"

@class TsGoogleAppIdentifier;
@class TsGoogleAppState;

// A window of the previous version with its tabs.
@interface TsWorkspaceState : TsManagedObject

@property(nonatomic, copy) NSNumber* active;  // a boolean
@property(nonatomic, copy) NSDate* lastUpdatedAt;
@property(nonatomic, readonly) NSOrderedSet* appStates;

// As the last one.
- (TsGoogleAppState*)addAppStateWithIdentifier:(TsGoogleAppIdentifier*)identifier;

@end
