#pragma once

#import <Foundation/Foundation.h>

#include "Base/Ref.h"

// Locates an object for scripting by its container and key. GNUstep has no such classes; these have the part of Cocoa's
// that the application uses.
@interface NSScriptObjectSpecifier : NSObject {
  Ref<NSScriptObjectSpecifier> _containerSpecifier;
  Ref<NSString> _key;
}

// Without a container specifier the container is the application.
- (instancetype)initWithContainerClassDescription:(NSScriptClassDescription*)description
                               containerSpecifier:(NSScriptObjectSpecifier*)container
                                              key:(NSString*)key;

- (NSString*)key;

// nil for a missing object.
- (id)objectsByEvaluatingSpecifier;

@end

@interface NSIndexSpecifier : NSScriptObjectSpecifier {
  NSInteger _index;
}

- (instancetype)initWithContainerClassDescription:(NSScriptClassDescription*)description
                               containerSpecifier:(NSScriptObjectSpecifier*)container
                                              key:(NSString*)key
                                            index:(NSInteger)index;

@end

@interface NSUniqueIDSpecifier : NSScriptObjectSpecifier {
  Ref<NSObject> _uniqueID;
}

- (instancetype)initWithContainerClassDescription:(NSScriptClassDescription*)description
                               containerSpecifier:(NSScriptObjectSpecifier*)container
                                              key:(NSString*)key
                                         uniqueID:(id)uniqueID;

@end

@interface NSObject (ScriptObjectSpecifier)

// nil for the outermost container.
- (NSScriptObjectSpecifier*)objectSpecifier;

@end
