#pragma once

#include <Foundation/NSDictionary.h>

@interface NSScriptClassDescription : NSObject
+ (NSScriptClassDescription*)classDescriptionForClass:(Class)cls;
@end
@interface NSObject (ClassDescription)
@property(readonly, copy) id classDescription;
@end
@interface NSScriptObjectSpecifier : NSObject
@property(retain) NSScriptObjectSpecifier* containerSpecifier;
@end
@interface NSObject (ScriptObjectSpecifiers)
@property(readonly, retain) NSScriptObjectSpecifier* objectSpecifier;
@end
@interface NSIndexSpecifier : NSScriptObjectSpecifier
- (instancetype)initWithContainerClassDescription:(NSScriptClassDescription*)description
                               containerSpecifier:(NSScriptObjectSpecifier*)container
                                              key:(NSString*)key
                                            index:(NSInteger)index;
@end
@interface NSUniqueIDSpecifier : NSScriptObjectSpecifier
- (instancetype)initWithContainerClassDescription:(NSScriptClassDescription*)description
                               containerSpecifier:(NSScriptObjectSpecifier*)container
                                              key:(NSString*)key
                                         uniqueID:(id)identifier;
@end
@interface NSScriptCommand : NSObject
@property(copy) NSDictionary* arguments;
@property(readonly, copy) NSDictionary* evaluatedArguments;
@property(retain) id directParameter;
@property NSInteger scriptErrorNumber;
@property(copy) NSString* scriptErrorString;
@end
