#pragma once

#include <Foundation/NSObject.h>

@class NSCharacterSet, NSLocale;

using NSStringEncoding = NSUInteger;
enum : NSStringEncoding {
  NSASCIIStringEncoding = 1,
  NSUTF8StringEncoding = 4,
  NSISOLatin1StringEncoding = 5,
  NSUnicodeStringEncoding = 10,
  NSUTF16LittleEndianStringEncoding = 0x94000100,
};
using NSStringCompareOptions = NSUInteger;
enum : NSStringCompareOptions { NSCaseInsensitiveSearch = 1, NSLiteralSearch = 2, NSBackwardsSearch = 4 };

@interface NSString : NSObject <NSCopying, NSMutableCopying, NSSecureCoding>
@property(readonly) NSUInteger length;
- (unichar)characterAtIndex:(NSUInteger)index;

+ (instancetype)string;
+ (instancetype)stringWithString:(NSString*)string;
+ (instancetype)stringWithCharacters:(const unichar*)characters length:(NSUInteger)length;
+ (instancetype)stringWithUTF8String:(const char*)text;
+ (instancetype)stringWithFormat:(NSString*)format, ... NS_FORMAT_FUNCTION(1, 2);
- (instancetype)initWithString:(NSString*)string;
- (instancetype)initWithUTF8String:(const char*)text;
- (instancetype)initWithCharacters:(const unichar*)characters length:(NSUInteger)length;
- (instancetype)initWithCharactersNoCopy:(unichar*)characters length:(NSUInteger)length freeWhenDone:(BOOL)frees;
- (instancetype)initWithBytes:(const void*)bytes length:(NSUInteger)length encoding:(NSStringEncoding)encoding;
- (instancetype)initWithBytesNoCopy:(void*)bytes
                             length:(NSUInteger)length
                           encoding:(NSStringEncoding)encoding
                       freeWhenDone:(BOOL)frees;
- (instancetype)initWithData:(NSData*)data encoding:(NSStringEncoding)encoding;
- (instancetype)initWithFormat:(NSString*)format, ... NS_FORMAT_FUNCTION(1, 2);
- (instancetype)initWithFormat:(NSString*)format arguments:(va_list)arguments NS_FORMAT_FUNCTION(1, 0);

@property(readonly) const char* UTF8String NS_RETURNS_INNER_POINTER;
@property(readonly) const char* fileSystemRepresentation NS_RETURNS_INNER_POINTER;
@property(readonly) NSStringEncoding fastestEncoding;
- (NSUInteger)lengthOfBytesUsingEncoding:(NSStringEncoding)encoding;
- (void)getCharacters:(unichar*)buffer range:(NSRange)range;
- (BOOL)getCString:(char*)buffer maxLength:(NSUInteger)maxBufferCount encoding:(NSStringEncoding)encoding;
- (BOOL)getBytes:(void*)buffer
         maxLength:(NSUInteger)length
        usedLength:(NSUInteger*)used
          encoding:(NSStringEncoding)encoding
           options:(NSUInteger)options
             range:(NSRange)range
    remainingRange:(NSRange*)rest;
- (NSData*)dataUsingEncoding:(NSStringEncoding)encoding;
- (NSData*)dataUsingEncoding:(NSStringEncoding)encoding allowLossyConversion:(BOOL)lossy;

- (BOOL)isEqualToString:(NSString*)string;
- (NSComparisonResult)compare:(NSString*)string;
- (NSComparisonResult)compare:(NSString*)string options:(NSStringCompareOptions)options;
- (NSComparisonResult)caseInsensitiveCompare:(NSString*)string;
- (NSComparisonResult)localizedStandardCompare:(NSString*)string;
- (BOOL)hasPrefix:(NSString*)string;
- (BOOL)hasSuffix:(NSString*)string;
- (BOOL)containsString:(NSString*)string;
- (NSRange)rangeOfString:(NSString*)string;
- (NSRange)rangeOfString:(NSString*)string options:(NSStringCompareOptions)options;
- (NSRange)rangeOfCharacterFromSet:(NSCharacterSet*)set;
- (NSRange)rangeOfComposedCharacterSequenceAtIndex:(NSUInteger)index;
- (NSString*)substringFromIndex:(NSUInteger)index;
- (NSString*)substringToIndex:(NSUInteger)index;
- (NSString*)substringWithRange:(NSRange)range;
- (NSString*)stringByAppendingString:(NSString*)string;
- (NSString*)stringByAppendingFormat:(NSString*)format, ... NS_FORMAT_FUNCTION(1, 2);
- (NSString*)stringByReplacingOccurrencesOfString:(NSString*)target withString:(NSString*)replacement;
- (NSString*)stringByTrimmingCharactersInSet:(NSCharacterSet*)set;
- (NSArray*)componentsSeparatedByString:(NSString*)separator;
- (NSArray*)componentsSeparatedByCharactersInSet:(NSCharacterSet*)separator;
- (void)getParagraphStart:(NSUInteger*)start
                      end:(NSUInteger*)end
              contentsEnd:(NSUInteger*)contentsEnd
                 forRange:(NSRange)range;
@property(readonly, copy) NSString* lowercaseString;
@property(readonly, copy) NSString* uppercaseString;
@property(readonly) int intValue;
@property(readonly) NSInteger integerValue;
@property(readonly) long long longLongValue;
@property(readonly) double doubleValue;
@property(readonly) float floatValue;
@property(readonly) BOOL boolValue;
- (NSString*)stringByAddingPercentEncodingWithAllowedCharacters:(NSCharacterSet*)allowed;
@property(readonly, copy) NSString* stringByRemovingPercentEncoding;

@property(getter=isAbsolutePath, readonly) BOOL absolutePath;
@property(readonly, copy) NSString* lastPathComponent;
@property(readonly, copy) NSString* pathExtension;
@property(readonly, copy) NSArray* pathComponents;
@property(readonly, copy) NSString* stringByDeletingLastPathComponent;
@property(readonly, copy) NSString* stringByDeletingPathExtension;
@property(readonly, copy) NSString* stringByExpandingTildeInPath;
@property(readonly, copy) NSString* stringByStandardizingPath;
@property(readonly, copy) NSString* stringByResolvingSymlinksInPath;
- (NSString*)stringByAppendingPathComponent:(NSString*)component;
- (NSString*)stringByAppendingPathExtension:(NSString*)extension;

- (BOOL)writeToFile:(NSString*)path
         atomically:(BOOL)atomically
           encoding:(NSStringEncoding)encoding
              error:(NSError**)error;
@end

@interface NSMutableString : NSString
+ (instancetype)stringWithCapacity:(NSUInteger)capacity;
- (instancetype)initWithCapacity:(NSUInteger)capacity;
- (void)appendString:(NSString*)string;
- (void)appendFormat:(NSString*)format, ... NS_FORMAT_FUNCTION(1, 2);
- (void)setString:(NSString*)string;
- (void)deleteCharactersInRange:(NSRange)range;
- (void)replaceCharactersInRange:(NSRange)range withString:(NSString*)string;
@end

@interface NSSimpleCString : NSString
@end
@interface NSConstantString : NSSimpleCString
@end

@interface NSCharacterSet : NSObject <NSCopying>
@property(class, readonly) NSCharacterSet* whitespaceCharacterSet;
@property(class, readonly) NSCharacterSet* whitespaceAndNewlineCharacterSet;
@property(class, readonly) NSCharacterSet* newlineCharacterSet;
@property(class, readonly) NSCharacterSet* alphanumericCharacterSet;
@property(class, readonly) NSCharacterSet* URLQueryAllowedCharacterSet;
+ (instancetype)characterSetWithCharactersInString:(NSString*)string;
- (BOOL)characterIsMember:(unichar)character;
@end
