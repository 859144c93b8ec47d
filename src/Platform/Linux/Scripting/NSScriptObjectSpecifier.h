#pragma once

#import <Foundation/Foundation.h>

#include "Base/Ref.h"

// Locates an object for scripting: under a key of its container. GNUstep has no such classes.
@interface NSScriptObjectSpecifier : NSObject {
  Ref<NSScriptClassDescription> _containerClassDescription;
  Ref<NSScriptObjectSpecifier> _containerSpecifier;
  Ref<NSString> _key;
}

// Without a container specifier the container is the application.
- (instancetype)initWithContainerClassDescription:(NSScriptClassDescription*)description
                               containerSpecifier:(NSScriptObjectSpecifier*)container
                                              key:(NSString*)key;

- (NSScriptClassDescription*)containerClassDescription;
- (NSScriptObjectSpecifier*)containerSpecifier;
- (NSString*)key;

// nil when there is no such object.
- (id)objectsByEvaluatingSpecifier;

@end

@interface NSIndexSpecifier : NSScriptObjectSpecifier {
  NSInteger _index;
}

@property(nonatomic) NSInteger index;

- (instancetype)initWithContainerClassDescription:(NSScriptClassDescription*)description
                               containerSpecifier:(NSScriptObjectSpecifier*)container
                                              key:(NSString*)key
                                            index:(NSInteger)index;

@end

@interface NSUniqueIDSpecifier : NSScriptObjectSpecifier {
  Ref<NSObject> _uniqueID;
}

@property(nonatomic, copy) id uniqueID;

- (instancetype)initWithContainerClassDescription:(NSScriptClassDescription*)description
                               containerSpecifier:(NSScriptObjectSpecifier*)container
                                              key:(NSString*)key
                                         uniqueID:(id)uniqueID;

@end

@interface NSObject (ScriptObjectSpecifier)

// nil: the top of the containers.
- (NSScriptObjectSpecifier*)objectSpecifier;

@end
