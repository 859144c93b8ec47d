#pragma once

#include <Foundation/NSArray.h>

@interface NSSet<__covariant ObjectType> : NSObject <NSCopying, NSMutableCopying, NSSecureCoding, NSFastEnumeration>
@property(readonly) NSUInteger count;
+ (instancetype)set;
+ (instancetype)setWithObject:(ObjectType)object;
+ (instancetype)setWithObjects:(ObjectType)first, ... NS_REQUIRES_NIL_TERMINATION;
+ (instancetype)setWithArray:(NSArray<ObjectType>*)array;
@property(readonly, copy) NSArray<ObjectType>* allObjects;
- (ObjectType)anyObject;
- (BOOL)containsObject:(ObjectType)object;
- (NSEnumerator<ObjectType>*)objectEnumerator;
@end

@interface NSMutableSet<ObjectType> : NSSet <ObjectType>
+ (instancetype)setWithCapacity:(NSUInteger)capacity;
- (instancetype)initWithCapacity:(NSUInteger)capacity;
- (void)addObject:(ObjectType)object;
- (void)addObjectsFromArray:(NSArray<ObjectType>*)array;
- (void)removeObject:(ObjectType)object;
- (void)removeAllObjects;
@end

@interface NSOrderedSet<__covariant ObjectType> : NSObject <NSCopying, NSFastEnumeration>
+ (instancetype)orderedSetWithArray:(NSArray<ObjectType>*)array;
@property(readonly) NSUInteger count;
@property(readonly, strong) NSArray<ObjectType>* array;
@end

using NSPointerFunctionsOptions = NSUInteger;
enum : NSPointerFunctionsOptions {
  NSPointerFunctionsStrongMemory = 0,
  NSPointerFunctionsOpaqueMemory = 2,
  NSPointerFunctionsWeakMemory = 5,
  NSPointerFunctionsObjectPointerPersonality = 1 << 9,
};

@interface NSHashTable<ObjectType> : NSObject <NSFastEnumeration>
+ (instancetype)hashTableWithOptions:(NSPointerFunctionsOptions)options;
+ (instancetype)weakObjectsHashTable;
- (void)addObject:(ObjectType)object;
- (void)removeObject:(ObjectType)object;
- (BOOL)containsObject:(ObjectType)object;
@property(readonly, copy) NSArray<ObjectType>* allObjects;
@end

@interface NSMapTable<KeyType, ObjectType> : NSObject <NSFastEnumeration>
+ (instancetype)weakToStrongObjectsMapTable;
+ (instancetype)strongToStrongObjectsMapTable;
- (ObjectType)objectForKey:(KeyType)key;
- (void)setObject:(ObjectType)object forKey:(KeyType)key;
- (void)removeObjectForKey:(KeyType)key;
@end
