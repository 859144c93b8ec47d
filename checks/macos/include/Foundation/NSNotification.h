#pragma once

#include <Foundation/NSObject.h>

using NSNotificationName = NSString*;
@class NSOperationQueue;

@interface NSNotification : NSObject <NSCopying>
+ (instancetype)notificationWithName:(NSNotificationName)name object:(id)object userInfo:(NSDictionary*)info;
@property(readonly, copy) NSNotificationName name;
@property(readonly, strong) id object;
@property(readonly, copy) NSDictionary* userInfo;
@end

@interface NSNotificationCenter : NSObject
@property(class, readonly, strong) NSNotificationCenter* defaultCenter;
- (void)addObserver:(id)observer selector:(SEL)selector name:(NSNotificationName)name object:(id)object;
- (id)addObserverForName:(NSNotificationName)name
                  object:(id)object
                   queue:(NSOperationQueue*)queue
              usingBlock:(void (^)(NSNotification* notification))block;
- (void)postNotification:(NSNotification*)notification;
- (void)postNotificationName:(NSNotificationName)name object:(id)object;
- (void)postNotificationName:(NSNotificationName)name object:(id)object userInfo:(NSDictionary*)info;
- (void)removeObserver:(id)observer;
- (void)removeObserver:(id)observer name:(NSNotificationName)name object:(id)object;
@end

@interface NSDistributedNotificationCenter : NSNotificationCenter
+ (NSDistributedNotificationCenter*)defaultCenter;
- (void)postNotificationName:(NSNotificationName)name
                      object:(NSString*)object
                    userInfo:(NSDictionary*)info
          deliverImmediately:(BOOL)immediately;
@end
