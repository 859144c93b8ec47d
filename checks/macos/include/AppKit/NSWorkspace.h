#pragma once

#include <AppKit/NSImage.h>

@class NSRunningApplication, UTType;

@interface NSWorkspaceOpenConfiguration : NSObject <NSCopying>
+ (instancetype)configuration;
@property BOOL promptsUserIfNeeded;
@property BOOL addsToRecentItems;
@property BOOL activates;
@property BOOL hides;
@property(getter=isForPrinting) BOOL forPrinting;
@end

@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
@property(readonly, strong) NSNotificationCenter* notificationCenter;
- (NSImage*)iconForFile:(NSString*)path;
- (NSImage*)iconForContentType:(UTType*)type API_AVAILABLE(macos(11.0));
- (NSURL*)URLForApplicationWithBundleIdentifier:(NSString*)identifier;
- (NSURL*)URLForApplicationToOpenURL:(NSURL*)url;
- (void)openURL:(NSURL*)url
        configuration:(NSWorkspaceOpenConfiguration*)configuration
    completionHandler:(void (^)(NSRunningApplication* application, NSError* error))handler API_AVAILABLE(macos(10.15));
- (void)openURLs:(NSArray*)urls
    withApplicationAtURL:(NSURL*)application
           configuration:(NSWorkspaceOpenConfiguration*)configuration
       completionHandler:(void (^)(NSRunningApplication* application, NSError* error))handler
    API_AVAILABLE(macos(10.15));
- (void)openApplicationAtURL:(NSURL*)application
               configuration:(NSWorkspaceOpenConfiguration*)configuration
           completionHandler:(void (^)(NSRunningApplication* application, NSError* error))handler
    API_AVAILABLE(macos(10.15));
- (BOOL)openURL:(NSURL*)url;
- (void)activateFileViewerSelectingURLs:(NSArray*)urls;
@end
