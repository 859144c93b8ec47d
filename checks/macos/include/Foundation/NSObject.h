#pragma once

#include <Foundation/NSObjCRuntime.h>

typedef struct _NSZone NSZone;

@protocol NSObject
- (BOOL)isEqual:(id)object;
@property(readonly) NSUInteger hash;
@property(readonly) Class superclass;
- (Class)class;
- (instancetype)self;
- (BOOL)isKindOfClass:(Class)cls;
- (BOOL)isMemberOfClass:(Class)cls;
- (BOOL)conformsToProtocol:(Protocol*)protocol;
- (BOOL)respondsToSelector:(SEL)selector;
- (id)performSelector:(SEL)selector;
- (id)performSelector:(SEL)selector withObject:(id)object;
- (id)performSelector:(SEL)selector withObject:(id)first withObject:(id)second;
- (instancetype)retain;
- (oneway void)release;
- (instancetype)autorelease;
- (NSUInteger)retainCount;
@property(readonly, copy) NSString* description;
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject> {
  Class isa;
}
+ (void)load;
+ (void)initialize;
+ (instancetype)new;
+ (instancetype)alloc;
+ (instancetype)allocWithZone:(NSZone*)zone;
+ (Class)class;
+ (Class)superclass;
+ (BOOL)instancesRespondToSelector:(SEL)selector;
+ (IMP)instanceMethodForSelector:(SEL)selector;
+ (NSString*)description;
- (instancetype)init;
- (void)dealloc;
- (id)copy;
- (id)mutableCopy;
- (IMP)methodForSelector:(SEL)selector;
- (void)doesNotRecognizeSelector:(SEL)selector;
- (id)forwardingTargetForSelector:(SEL)selector;
- (void)forwardInvocation:(NSInvocation*)invocation;
- (NSMethodSignature*)methodSignatureForSelector:(SEL)selector;
@end

@protocol NSCopying
- (id)copyWithZone:(NSZone*)zone;
@end
@protocol NSMutableCopying
- (id)mutableCopyWithZone:(NSZone*)zone;
@end
@protocol NSCoding
- (void)encodeWithCoder:(NSCoder*)coder;
- (instancetype)initWithCoder:(NSCoder*)coder;
@end
@protocol NSSecureCoding <NSCoding>
@property(class, readonly) BOOL supportsSecureCoding;
@end
@protocol NSDiscardableContent
@end
@class NSMethodSignature, NSSet;

@interface NSObject (KeyValueCoding)
- (id)valueForKey:(NSString*)key;
- (void)setValue:(id)value forKey:(NSString*)key;
- (id)valueForKeyPath:(NSString*)keyPath;
+ (NSSet*)keyPathsForValuesAffectingValueForKey:(NSString*)key;
- (id)valueForUndefinedKey:(NSString*)key;
- (void)willChangeValueForKey:(NSString*)key;
- (void)didChangeValueForKey:(NSString*)key;
@end

@interface NSObject (Threads)
- (void)performSelectorOnMainThread:(SEL)selector withObject:(id)object waitUntilDone:(BOOL)wait;
- (void)performSelector:(SEL)selector withObject:(id)object afterDelay:(NSTimeInterval)delay;
+ (void)cancelPreviousPerformRequestsWithTarget:(id)target;
@end
