#pragma once

#include <Foundation/NSDictionary.h>

using NSFileAttributeKey = NSString*;
FOUNDATION_EXPORT NSString* const NSFileTypeRegular;
FOUNDATION_EXPORT NSString* const NSFileTypeDirectory;

@interface NSDirectoryEnumerator : NSEnumerator
- (void)skipDescendants;
@property(readonly, copy) NSDictionary* fileAttributes;
@end

@interface NSFileManager : NSObject
@property(class, readonly, strong) NSFileManager* defaultManager;
@property(readonly, copy) NSString* currentDirectoryPath;
- (BOOL)fileExistsAtPath:(NSString*)path;
- (BOOL)fileExistsAtPath:(NSString*)path isDirectory:(BOOL*)isDirectory;
- (BOOL)isReadableFileAtPath:(NSString*)path;
- (NSDictionary*)attributesOfItemAtPath:(NSString*)path error:(NSError**)error;
- (NSArray*)contentsOfDirectoryAtPath:(NSString*)path error:(NSError**)error;
- (NSDirectoryEnumerator*)enumeratorAtPath:(NSString*)path;
- (BOOL)createDirectoryAtPath:(NSString*)path
    withIntermediateDirectories:(BOOL)intermediates
                     attributes:(NSDictionary*)attributes
                          error:(NSError**)error;
- (BOOL)copyItemAtPath:(NSString*)path toPath:(NSString*)target error:(NSError**)error;
- (BOOL)moveItemAtPath:(NSString*)path toPath:(NSString*)target error:(NSError**)error;
- (BOOL)removeItemAtPath:(NSString*)path error:(NSError**)error;
- (NSString*)displayNameAtPath:(NSString*)path;
- (NSString*)stringWithFileSystemRepresentation:(const char*)text length:(NSUInteger)length;
@end

using NSSearchPathDirectory = NSUInteger;
enum : NSSearchPathDirectory { NSLibraryDirectory = 5, NSApplicationSupportDirectory = 14, NSCachesDirectory = 13 };
using NSSearchPathDomainMask = NSUInteger;
enum : NSSearchPathDomainMask { NSUserDomainMask = 1, NSLocalDomainMask = 2, NSSystemDomainMask = 8 };
FOUNDATION_EXPORT NSArray* NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory directory,
                                                               NSSearchPathDomainMask domains, BOOL expandTilde);
FOUNDATION_EXPORT NSString* NSTemporaryDirectory(void);
FOUNDATION_EXPORT NSString* NSHomeDirectory(void);
FOUNDATION_EXPORT NSString* NSUserName(void);
