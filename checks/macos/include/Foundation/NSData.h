#pragma once

#include <Foundation/NSObject.h>

using NSDataBase64EncodingOptions = NSUInteger;
using NSDataBase64DecodingOptions = NSUInteger;
enum : NSDataBase64DecodingOptions { NSDataBase64DecodingIgnoreUnknownCharacters = 1 };
using NSDataReadingOptions = NSUInteger;
enum : NSDataReadingOptions { NSDataReadingMappedIfSafe = 1 };
using NSDataWritingOptions = NSUInteger;
enum : NSDataWritingOptions { NSDataWritingAtomic = 1 };

@interface NSData : NSObject <NSCopying, NSMutableCopying, NSSecureCoding>
@property(readonly) NSUInteger length;
@property(readonly) const void* bytes NS_RETURNS_INNER_POINTER;
+ (instancetype)data;
+ (instancetype)dataWithData:(NSData*)data;
+ (instancetype)dataWithBytes:(const void*)bytes length:(NSUInteger)length;
+ (instancetype)dataWithBytesNoCopy:(void*)bytes length:(NSUInteger)length freeWhenDone:(BOOL)frees;
+ (instancetype)dataWithContentsOfFile:(NSString*)path;
+ (instancetype)dataWithContentsOfFile:(NSString*)path options:(NSDataReadingOptions)options error:(NSError**)error;
+ (instancetype)dataWithContentsOfURL:(NSURL*)url options:(NSDataReadingOptions)options error:(NSError**)error;
- (instancetype)initWithBytes:(const void*)bytes length:(NSUInteger)length;
- (instancetype)initWithBytesNoCopy:(void*)bytes length:(NSUInteger)length freeWhenDone:(BOOL)frees;
- (instancetype)initWithBase64EncodedString:(NSString*)text options:(NSDataBase64DecodingOptions)options;
- (instancetype)initWithBase64EncodedData:(NSData*)data options:(NSDataBase64DecodingOptions)options;
- (NSString*)base64EncodedStringWithOptions:(NSDataBase64EncodingOptions)options;
- (NSData*)base64EncodedDataWithOptions:(NSDataBase64EncodingOptions)options;
- (BOOL)isEqualToData:(NSData*)data;
- (NSData*)subdataWithRange:(NSRange)range;
- (void)getBytes:(void*)buffer length:(NSUInteger)length;
- (void)enumerateByteRangesUsingBlock:(void(NS_NOESCAPE ^)(const void* bytes, NSRange range, BOOL* stop))block;
- (BOOL)writeToFile:(NSString*)path atomically:(BOOL)atomically;
- (BOOL)writeToFile:(NSString*)path options:(NSDataWritingOptions)options error:(NSError**)error;
@end

@interface NSMutableData : NSData
+ (instancetype)dataWithCapacity:(NSUInteger)capacity;
+ (instancetype)dataWithLength:(NSUInteger)length;
@property(readonly) void* mutableBytes NS_RETURNS_INNER_POINTER;
- (void)setLength:(NSUInteger)length;
- (void)appendBytes:(const void*)bytes length:(NSUInteger)length;
- (void)appendData:(NSData*)data;
@end
