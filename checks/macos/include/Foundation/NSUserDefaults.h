#pragma once

#include <Foundation/NSDictionary.h>
#include <Foundation/NSNotification.h>

FOUNDATION_EXPORT NSNotificationName const NSUserDefaultsDidChangeNotification;

@interface NSUserDefaults : NSObject
@property(class, readonly, strong) NSUserDefaults* standardUserDefaults;
- (instancetype)initWithSuiteName:(NSString*)name;
- (id)objectForKey:(NSString*)key;
- (NSString*)stringForKey:(NSString*)key;
- (NSArray*)arrayForKey:(NSString*)key;
- (NSDictionary*)dictionaryForKey:(NSString*)key;
- (NSData*)dataForKey:(NSString*)key;
- (BOOL)boolForKey:(NSString*)key;
- (NSInteger)integerForKey:(NSString*)key;
- (double)doubleForKey:(NSString*)key;
- (void)setObject:(id)value forKey:(NSString*)key;
- (void)setBool:(BOOL)value forKey:(NSString*)key;
- (void)setInteger:(NSInteger)value forKey:(NSString*)key;
- (void)setDouble:(double)value forKey:(NSString*)key;
- (void)removeObjectForKey:(NSString*)key;
- (void)registerDefaults:(NSDictionary*)defaults;
- (NSDictionary*)dictionaryRepresentation;
- (NSDictionary*)persistentDomainForName:(NSString*)name;
- (BOOL)synchronize;
@end

using NSPropertyListFormat = NSUInteger;
enum : NSPropertyListFormat { NSPropertyListXMLFormat_v1_0 = 100, NSPropertyListBinaryFormat_v1_0 = 200 };
using NSPropertyListMutabilityOptions = NSUInteger;
enum : NSPropertyListMutabilityOptions { NSPropertyListImmutable = 0, NSPropertyListMutableContainers = 1 };
@interface NSPropertyListSerialization : NSObject
+ (id)propertyListWithData:(NSData*)data
                   options:(NSPropertyListMutabilityOptions)options
                    format:(NSPropertyListFormat*)format
                     error:(NSError**)error;
+ (NSData*)dataWithPropertyList:(id)plist
                         format:(NSPropertyListFormat)format
                        options:(NSUInteger)options
                          error:(NSError**)error;
@end
