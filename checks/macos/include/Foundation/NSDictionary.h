#pragma once

#include <Foundation/NSArray.h>

@interface NSDictionary<__covariant KeyType, __covariant ObjectType>
    : NSObject <NSCopying, NSMutableCopying, NSSecureCoding, NSFastEnumeration>
@property(readonly) NSUInteger count;
- (ObjectType)objectForKey:(KeyType)key;
- (ObjectType)objectForKeyedSubscript:(KeyType)key;
- (NSEnumerator<KeyType>*)keyEnumerator;
- (NSEnumerator<ObjectType>*)objectEnumerator;
@property(readonly, copy) NSArray<KeyType>* allKeys;
@property(readonly, copy) NSArray<ObjectType>* allValues;
+ (instancetype)dictionary;
+ (instancetype)dictionaryWithObject:(ObjectType)object forKey:(KeyType)key;
+ (instancetype)dictionaryWithObjects:(const ObjectType[])objects forKeys:(const KeyType[])keys count:(NSUInteger)count;
+ (instancetype)dictionaryWithObjectsAndKeys:(id)first, ... NS_REQUIRES_NIL_TERMINATION;
+ (instancetype)dictionaryWithDictionary:(NSDictionary*)dictionary;
+ (instancetype)dictionaryWithContentsOfFile:(NSString*)path;
- (instancetype)initWithObjects:(const ObjectType[])objects forKeys:(const KeyType[])keys count:(NSUInteger)count;
- (instancetype)initWithDictionary:(NSDictionary*)dictionary;
- (BOOL)isEqualToDictionary:(NSDictionary*)dictionary;
- (BOOL)writeToFile:(NSString*)path atomically:(BOOL)atomically;
@end

@interface NSMutableDictionary<KeyType, ObjectType> : NSDictionary <KeyType, ObjectType>
+ (instancetype)dictionaryWithCapacity:(NSUInteger)capacity;
- (instancetype)initWithCapacity:(NSUInteger)capacity;
- (void)setObject:(ObjectType)object forKey:(KeyType)key;
- (void)setObject:(ObjectType)object forKeyedSubscript:(KeyType)key;
- (void)removeObjectForKey:(KeyType)key;
- (void)removeAllObjects;
- (void)addEntriesFromDictionary:(NSDictionary*)dictionary;
@end

@interface NSDictionary (FileAttributes)
- (NSString*)fileType;
- (unsigned long long)fileSize;
- (NSDate*)fileModificationDate;
@end
