#pragma once

#include <Foundation/NSObject.h>

@class NSIndexSet, NSSortDescriptor;

@interface NSEnumerator<ObjectType> : NSObject <NSFastEnumeration>
- (ObjectType)nextObject;
@property(readonly, copy) NSArray* allObjects;
@end

@interface NSArray<__covariant ObjectType> : NSObject <NSCopying, NSMutableCopying, NSSecureCoding, NSFastEnumeration>
@property(readonly) NSUInteger count;
- (ObjectType)objectAtIndex:(NSUInteger)index;
- (ObjectType)objectAtIndexedSubscript:(NSUInteger)index;
@property(readonly) ObjectType firstObject;
@property(readonly) ObjectType lastObject;
+ (instancetype)array;
+ (instancetype)arrayWithObject:(ObjectType)object;
+ (instancetype)arrayWithObjects:(ObjectType)first, ... NS_REQUIRES_NIL_TERMINATION;
+ (instancetype)arrayWithObjects:(const ObjectType[])objects count:(NSUInteger)count;
+ (instancetype)arrayWithArray:(NSArray<ObjectType>*)array;
- (instancetype)initWithObjects:(const ObjectType[])objects count:(NSUInteger)count;
- (instancetype)initWithArray:(NSArray<ObjectType>*)array;
- (BOOL)containsObject:(ObjectType)object;
- (NSUInteger)indexOfObject:(ObjectType)object;
- (NSUInteger)indexOfObjectIdenticalTo:(ObjectType)object;
- (BOOL)isEqualToArray:(NSArray<ObjectType>*)array;
- (NSArray<ObjectType>*)arrayByAddingObject:(ObjectType)object;
- (NSArray<ObjectType>*)subarrayWithRange:(NSRange)range;
- (NSArray<ObjectType>*)sortedArrayUsingDescriptors:(NSArray*)descriptors;
- (NSArray<ObjectType>*)sortedArrayUsingSelector:(SEL)comparator;
- (NSEnumerator<ObjectType>*)objectEnumerator;
- (NSEnumerator<ObjectType>*)reverseObjectEnumerator;
- (NSString*)componentsJoinedByString:(NSString*)separator;
- (void)makeObjectsPerformSelector:(SEL)selector;
- (void)getObjects:(ObjectType __unsafe_unretained[])objects range:(NSRange)range;
- (BOOL)writeToFile:(NSString*)path atomically:(BOOL)atomically;
@end

@interface NSMutableArray<ObjectType> : NSArray <ObjectType>
+ (instancetype)arrayWithCapacity:(NSUInteger)capacity;
- (instancetype)initWithCapacity:(NSUInteger)capacity;
- (void)addObject:(ObjectType)object;
- (void)addObjectsFromArray:(NSArray<ObjectType>*)array;
- (void)insertObject:(ObjectType)object atIndex:(NSUInteger)index;
- (void)replaceObjectAtIndex:(NSUInteger)index withObject:(ObjectType)object;
- (void)removeAllObjects;
- (void)removeLastObject;
- (void)removeObject:(ObjectType)object;
- (void)removeObjectAtIndex:(NSUInteger)index;
- (void)removeObjectIdenticalTo:(ObjectType)object;
- (void)removeObjectsAtIndexes:(NSIndexSet*)indexes;
- (void)setArray:(NSArray<ObjectType>*)array;
- (void)sortUsingDescriptors:(NSArray*)descriptors;
@end

@interface NSIndexSet : NSObject <NSCopying>
+ (instancetype)indexSet;
+ (instancetype)indexSetWithIndex:(NSUInteger)index;
@property(readonly) NSUInteger count;
@property(readonly) NSUInteger firstIndex;
@property(readonly) NSUInteger lastIndex;
- (NSUInteger)indexGreaterThanIndex:(NSUInteger)index;
@end

@interface NSMutableIndexSet : NSIndexSet
- (void)addIndex:(NSUInteger)index;
@end

@interface NSSortDescriptor : NSObject
+ (instancetype)sortDescriptorWithKey:(NSString*)key ascending:(BOOL)ascending;
+ (instancetype)sortDescriptorWithKey:(NSString*)key ascending:(BOOL)ascending selector:(SEL)selector;
- (instancetype)initWithKey:(NSString*)key ascending:(BOOL)ascending;
@property(readonly, copy) NSString* key;
@property(readonly) BOOL ascending;
@end
