#pragma once

#include <Foundation/NSDate.h>

@interface NSThread : NSObject
@property(class, readonly) BOOL isMainThread;
@property(class, readonly, strong) NSThread* currentThread;
@property(class, readonly, copy) NSArray* callStackSymbols;
+ (void)sleepForTimeInterval:(NSTimeInterval)interval;
@end

@interface NSOperationQueue : NSObject
@property(class, readonly, strong) NSOperationQueue* mainQueue;
- (void)addOperationWithBlock:(void (^)(void))block;
@end

using NSRunLoopMode = NSString*;
FOUNDATION_EXPORT NSRunLoopMode const NSDefaultRunLoopMode;
FOUNDATION_EXPORT NSRunLoopMode const NSRunLoopCommonModes;

@class NSTimer;
@interface NSRunLoop : NSObject
@property(class, readonly, strong) NSRunLoop* currentRunLoop;
@property(class, readonly, strong) NSRunLoop* mainRunLoop;
- (void)addTimer:(NSTimer*)timer forMode:(NSRunLoopMode)mode;
- (BOOL)runMode:(NSRunLoopMode)mode beforeDate:(NSDate*)limit;
- (void)runUntilDate:(NSDate*)limit;
@end

@interface NSTimer : NSObject
+ (NSTimer*)scheduledTimerWithTimeInterval:(NSTimeInterval)interval
                                    target:(id)target
                                  selector:(SEL)selector
                                  userInfo:(id)info
                                   repeats:(BOOL)repeats;
+ (NSTimer*)timerWithTimeInterval:(NSTimeInterval)interval
                           target:(id)target
                         selector:(SEL)selector
                         userInfo:(id)info
                          repeats:(BOOL)repeats;
- (void)invalidate;
@property(readonly, getter=isValid) BOOL valid;
@property(readonly, retain) id userInfo;
@end

@interface NSInvocation : NSObject
- (void)invokeWithTarget:(id)target;
- (void)getArgument:(void*)argument atIndex:(NSInteger)index;
@property SEL selector;
@property(retain) id target;
@end

@interface NSMethodSignature : NSObject
+ (NSMethodSignature*)signatureWithObjCTypes:(const char*)types;
@end

@interface NSScanner : NSObject
+ (instancetype)scannerWithString:(NSString*)string;
- (BOOL)scanHexInt:(unsigned int*)value;
- (BOOL)scanString:(NSString*)string intoString:(NSString**)result API_DEPRECATED("", macos(10.0, 10.15));
@property(getter=isAtEnd, readonly) BOOL atEnd;
@end

using NSValueTransformerName = NSString*;
@interface NSValueTransformer : NSObject
+ (void)setValueTransformer:(NSValueTransformer*)transformer forName:(NSValueTransformerName)name;
+ (NSValueTransformer*)valueTransformerForName:(NSValueTransformerName)name;
+ (Class)transformedValueClass;
+ (BOOL)allowsReverseTransformation;
- (id)transformedValue:(id)value;
- (id)reverseTransformedValue:(id)value;
@end

@interface NSTask : NSObject
@property(copy) NSURL* executableURL;
@property(copy) NSArray* arguments;
- (BOOL)launchAndReturnError:(NSError**)error;
@end
