#pragma once

#import <Foundation/Foundation.h>

@interface TsReceiptsApp : NSObject

// nil when it isn't installed.
+ (NSString*)installedBundleId;
+ (NSURL*)urlForApplication;

+ (void)importEMLWithPath:(NSString*)path;

@end
