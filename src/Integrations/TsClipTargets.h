#pragma once

#import <Foundation/Foundation.h>

// Other applications, and what the user hands to them.

// Tasks, by a URL of the application's own scheme. Any thread.

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

// Takes a mail as a file. Any thread.
@interface TsReceiptsApp : NSObject
+ (NSString*)installedBundleId;
+ (NSURL*)urlForApplication;
+ (void)importEMLWithPath:(NSString*)path;
@end

// The document viewer, from which the user prints. Any thread.
@interface TsPreview : NSObject
+ (void)printFile:(NSURL*)url;
@end

@interface TsClipboard : NSObject
// Replaces the contents of the general pasteboard by a text. Main thread only.
+ (void)copy:(NSString*)text;
@end
