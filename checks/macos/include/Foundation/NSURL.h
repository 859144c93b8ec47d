#pragma once

#include <Foundation/NSArray.h>

using NSURLResourceKey = NSString*;
FOUNDATION_EXPORT NSURLResourceKey const NSURLVolumeNameKey;
FOUNDATION_EXPORT NSURLResourceKey const NSURLIsAliasFileKey;
FOUNDATION_EXPORT NSURLResourceKey const NSURLTypeIdentifierKey;
FOUNDATION_EXPORT NSURLResourceKey const NSURLContentTypeKey API_AVAILABLE(macos(11.0));

using NSURLBookmarkCreationOptions = NSUInteger;
enum : NSURLBookmarkCreationOptions { NSURLBookmarkCreationSuitableForBookmarkFile = 1 << 10 };
using NSURLBookmarkResolutionOptions = NSUInteger;
enum : NSURLBookmarkResolutionOptions {
  NSURLBookmarkResolutionWithoutUI = 1 << 8,
  NSURLBookmarkResolutionWithoutMounting = 1 << 9,
};

@interface NSURL : NSObject <NSCopying, NSSecureCoding>
+ (instancetype)URLWithString:(NSString*)string;
+ (NSURL*)fileURLWithPath:(NSString*)path;
+ (NSURL*)fileURLWithPath:(NSString*)path isDirectory:(BOOL)isDirectory;
+ (NSURL*)fileURLWithFileSystemRepresentation:(const char*)path isDirectory:(BOOL)isDirectory relativeToURL:(NSURL*)url;
@property(readonly, copy) NSString* absoluteString;
@property(readonly, copy) NSString* scheme;
@property(readonly, copy) NSString* host;
@property(readonly, copy) NSString* path;
@property(readonly, copy) NSString* lastPathComponent;
@property(readonly, copy) NSString* pathExtension;
@property(getter=isFileURL, readonly) BOOL fileURL;
@property(readonly) const char* fileSystemRepresentation NS_RETURNS_INNER_POINTER;
@property(readonly, copy) NSURL* URLByResolvingSymlinksInPath;
@property(readonly, copy) NSURL* URLByStandardizingPath;
@property(readonly, copy) NSURL* absoluteURL;
- (NSURL*)URLByAppendingPathComponent:(NSString*)component;
- (BOOL)getResourceValue:(id*)value forKey:(NSURLResourceKey)key error:(NSError**)error;
- (NSData*)bookmarkDataWithOptions:(NSURLBookmarkCreationOptions)options
    includingResourceValuesForKeys:(NSArray*)keys
                     relativeToURL:(NSURL*)url
                             error:(NSError**)error;
+ (BOOL)writeBookmarkData:(NSData*)data toURL:(NSURL*)url options:(NSUInteger)options error:(NSError**)error;
+ (instancetype)URLByResolvingAliasFileAtURL:(NSURL*)url
                                     options:(NSURLBookmarkResolutionOptions)options
                                       error:(NSError**)error;
@end
