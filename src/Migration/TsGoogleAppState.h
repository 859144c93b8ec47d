#pragma once

#import "Migration/TsManagedObject.h"

@class TsWorkspaceState;

// An application that was open in a workspace, and where in it the user was.
@interface TsGoogleAppState : TsManagedObject

@property(nonatomic, copy) NSString* identifier;  // the text form of a TsGoogleAppIdentifier
@property(nonatomic, copy) NSString* url;
@property(nonatomic, readonly) TsWorkspaceState* workspaceState;

@end
