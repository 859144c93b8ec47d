// GNUstep declares alerts, but Debian's is not built with them.

#import "Platform/Linux/Alerts/NSUserNotification+Desktop.h"

NSString* const NSUserNotificationDefaultSoundName = @"NSUserNotificationDefaultSoundName";

namespace {

NSString* const kPresented = @"presented";
NSString* const kActivationType = @"activationType";
NSString* const kResponse = @"response";
NSString* const kActualDeliveryDate = @"actualDeliveryDate";

}  // namespace

// The declaration has room for one object: all properties are in a dictionary.
@implementation NSUserNotification

- (instancetype)init {
  return [self initWithTs_propertyList:@{}];
}

- (void)dealloc {
  [_uniqueId release];
  [super dealloc];
}

- (id)copyWithZone:(NSZone*)zone {
  NSUserNotification* copy = [[[self class] allocWithZone:zone] init];
  [copy->_uniqueId setDictionary:_uniqueId];
  return copy;
}

- (NSString*)description {
  // No more than this: descriptions end in logs, and the rest is somebody's mail.
  return [NSString stringWithFormat:@"<%@: %p, identifier %@>", [self class], self, [self identifier]];
}

#define OBJECT_PROPERTY(Class, getter, setter) \
  -(Class*)getter {                            \
    return [_uniqueId objectForKey:@ #getter]; \
  }                                            \
  -(void)setter : (Class*)value {              \
    [self ts_set:value forKey:@ #getter];      \
  }

#define FLAG_PROPERTY(getter, setter)                                       \
  -(BOOL)getter {                                                           \
    return [[_uniqueId objectForKey:@ #getter] boolValue];                  \
  }                                                                         \
  -(void)setter : (BOOL)value {                                             \
    [_uniqueId setObject:[NSNumber numberWithBool:value] forKey:@ #getter]; \
  }

OBJECT_PROPERTY(NSString, identifier, setIdentifier)
OBJECT_PROPERTY(NSString, title, setTitle)
OBJECT_PROPERTY(NSString, subtitle, setSubtitle)
OBJECT_PROPERTY(NSString, informativeText, setInformativeText)
OBJECT_PROPERTY(NSString, soundName, setSoundName)
OBJECT_PROPERTY(NSString, actionButtonTitle, setActionButtonTitle)
OBJECT_PROPERTY(NSString, otherButtonTitle, setOtherButtonTitle)
OBJECT_PROPERTY(NSString, responsePlaceholder, setResponsePlaceholder)
OBJECT_PROPERTY(NSDictionary, userInfo, setUserInfo)
OBJECT_PROPERTY(NSDate, deliveryDate, setDeliveryDate)
OBJECT_PROPERTY(NSTimeZone, deliveryTimeZone, setDeliveryTimeZone)
OBJECT_PROPERTY(NSDateComponents, deliveryRepeatInterval, setDeliveryRepeatInterval)
OBJECT_PROPERTY(NSImage, contentImage, setContentImage)
FLAG_PROPERTY(hasActionButton, setHasActionButton)
FLAG_PROPERTY(hasReplyButton, setHasReplyButton)

- (NSDate*)actualDeliveryDate {
  return [_uniqueId objectForKey:kActualDeliveryDate];
}

- (BOOL)isPresented {
  return [[_uniqueId objectForKey:kPresented] boolValue];
}

- (BOOL)isRemote {
  return NO;
}

- (NSUserNotificationActivationType)activationType {
  return [[_uniqueId objectForKey:kActivationType] integerValue];
}

- (NSAttributedString*)response {
  return [_uniqueId objectForKey:kResponse];
}

- (void)ts_set:(id)value forKey:(NSString*)key {
  if (value == nil) return [_uniqueId removeObjectForKey:key];
  id copy = [value copy];
  [_uniqueId setObject:copy forKey:key];
  [copy release];
}

@end

@implementation NSUserNotification (Desktop)

- (instancetype)initWithTs_propertyList:(NSDictionary*)propertyList {
  self = [super init];
  if (self != nil) _uniqueId = [propertyList mutableCopy];
  return self;
}

- (NSDictionary*)ts_propertyList {
  NSArray* keys = @[
    @"identifier", @"title", @"subtitle", @"informativeText", @"soundName", @"actionButtonTitle", @"otherButtonTitle",
    @"responsePlaceholder", @"userInfo", @"deliveryDate", @"hasActionButton", @"hasReplyButton"
  ];
  NSMutableDictionary* properties = [NSMutableDictionary dictionary];
  for (NSString* key in keys) {
    if (id value = [_uniqueId objectForKey:key]) [properties setObject:value forKey:key];
  }
  return properties;
}

- (void)ts_setDelivered:(BOOL)isPresented {
  [_uniqueId setObject:[NSDate date] forKey:kActualDeliveryDate];
  [_uniqueId setObject:[NSNumber numberWithBool:isPresented] forKey:kPresented];
}

- (void)ts_setActivationType:(NSUserNotificationActivationType)type response:(NSString*)response {
  [_uniqueId setObject:[NSNumber numberWithInteger:type] forKey:kActivationType];
  if (response == nil) return;
  NSAttributedString* text = [[NSAttributedString alloc] initWithString:response];
  [_uniqueId setObject:text forKey:kResponse];
  [text release];
}

@end
