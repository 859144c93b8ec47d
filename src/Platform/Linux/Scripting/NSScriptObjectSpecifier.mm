#import "Platform/Linux/Scripting/NSScriptObjectSpecifier.h"

#import <AppKit/NSApplication.h>

@implementation NSScriptObjectSpecifier

- (instancetype)initWithContainerClassDescription:(NSScriptClassDescription*)description
                               containerSpecifier:(NSScriptObjectSpecifier*)container
                                              key:(NSString*)key {
  self = [super init];
  if (self) {
    _containerSpecifier = Retain(container);
    _key = Copy(key);
  }
  return self;
}

- (NSString*)key {
  return _key;
}

- (id)container {
  return _containerSpecifier ? [_containerSpecifier objectsByEvaluatingSpecifier] : NSApp;
}

- (id)objectsByEvaluatingSpecifier {
  return [[self container] valueForKey:_key];
}

@end

@implementation NSIndexSpecifier

- (instancetype)initWithContainerClassDescription:(NSScriptClassDescription*)description
                               containerSpecifier:(NSScriptObjectSpecifier*)container
                                              key:(NSString*)key
                                            index:(NSInteger)index {
  self = [super initWithContainerClassDescription:description containerSpecifier:container key:key];
  if (self) _index = index;
  return self;
}

- (id)objectsByEvaluatingSpecifier {
  NSArray* elements = [super objectsByEvaluatingSpecifier];
  const auto index = static_cast<NSUInteger>(_index);
  return index < [elements count] ? [elements objectAtIndex:index] : nil;
}

@end

@implementation NSUniqueIDSpecifier

- (instancetype)initWithContainerClassDescription:(NSScriptClassDescription*)description
                               containerSpecifier:(NSScriptObjectSpecifier*)container
                                              key:(NSString*)key
                                         uniqueID:(id)uniqueID {
  self = [super initWithContainerClassDescription:description containerSpecifier:container key:key];
  if (self) _uniqueID = Copy<NSObject>(uniqueID);
  return self;
}

- (id)objectsByEvaluatingSpecifier {
  NSString* name = [[[self key] substringToIndex:1] uppercaseString];
  const SEL lookUp = NSSelectorFromString(
      [NSString stringWithFormat:@"valueIn%@%@WithUniqueID:", name, [[self key] substringFromIndex:1]]);
  return [[self container] performSelector:lookUp withObject:_uniqueID.get()];
}

@end

@implementation NSObject (ScriptObjectSpecifier)

- (NSScriptObjectSpecifier*)objectSpecifier {
  return nil;
}

@end
