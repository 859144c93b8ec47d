#pragma once

#import <Foundation/Foundation.h>

// Task managers that take a task by a URL of theirs.

@interface TsOmnifocus : NSObject
+ (NSString*)installedBundleId;
+ (void)addActionWithContent:(NSString*)content comment:(NSString*)comment;
@end

@interface TsTodoist : NSObject
+ (BOOL)isInstalled;
+ (void)addActionWithContent:(NSString*)content comment:(NSString*)comment;
@end

@interface TsThings : NSObject
+ (NSString*)installedBundleId;
+ (void)addActionWithContent:(NSString*)content comment:(NSString*)comment;
@end
