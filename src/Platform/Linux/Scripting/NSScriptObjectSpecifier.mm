#import "Platform/Linux/Scripting/NSScriptObjectSpecifier.h"

#import <AppKit/NSApplication.h>

@implementation NSScriptObjectSpecifier

- (instancetype)initWithContainerClassDescription:(NSScriptClassDescription*)description
                               containerSpecifier:(NSScriptObjectSpecifier*)container
                                              key:(NSString*)key {
  self = [super init];
  if (self) {
    _containerClassDescription = Retain(description);
    _containerSpecifier = Retain(container);
    _key = Copy(key);
  }
  return self;
}

- (NSScriptClassDescription*)containerClassDescription {
  return _containerClassDescription;
}

- (NSScriptObjectSpecifier*)containerSpecifier {
  return _containerSpecifier;
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

@synthesize index = _index;

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
  const NSInteger count = static_cast<NSInteger>([elements count]);
  // Negative ones count from the end.
  const NSInteger index = _index < 0 ? _index + count : _index;
  return index >= 0 && index < count ? [elements objectAtIndex:static_cast<NSUInteger>(index)] : nil;
}

@end

@implementation NSUniqueIDSpecifier

- (instancetype)initWithContainerClassDescription:(NSScriptClassDescription*)description
                               containerSpecifier:(NSScriptObjectSpecifier*)container
                                              key:(NSString*)key
                                         uniqueID:(id)uniqueID {
  self = [super initWithContainerClassDescription:description containerSpecifier:container key:key];
  if (self) [self setUniqueID:uniqueID];
  return self;
}

- (id)uniqueID {
  return _uniqueID;
}

- (void)setUniqueID:(id)uniqueID {
  _uniqueID = Copy<NSObject>(uniqueID);
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
