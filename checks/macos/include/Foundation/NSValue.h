#pragma once

#include <Foundation/NSObject.h>

@interface NSValue : NSObject <NSCopying, NSSecureCoding>
@property(readonly) const char* objCType NS_RETURNS_INNER_POINTER;
+ (NSValue*)valueWithPointer:(const void*)pointer;
+ (NSValue*)valueWithNonretainedObject:(id)object;
@property(readonly) void* pointerValue;
@property(readonly) id nonretainedObjectValue;
@end

@interface NSNumber : NSValue
+ (NSNumber*)numberWithBool:(BOOL)value;
+ (NSNumber*)numberWithInt:(int)value;
+ (NSNumber*)numberWithUnsignedShort:(unsigned short)value;
+ (NSNumber*)numberWithUnsignedInt:(unsigned int)value;
+ (NSNumber*)numberWithInteger:(NSInteger)value;
+ (NSNumber*)numberWithUnsignedInteger:(NSUInteger)value;
+ (NSNumber*)numberWithLongLong:(long long)value;
+ (NSNumber*)numberWithUnsignedLongLong:(unsigned long long)value;
+ (NSNumber*)numberWithDouble:(double)value;
+ (NSNumber*)numberWithFloat:(float)value;
- (instancetype)initWithBool:(BOOL)value;
- (instancetype)initWithInt:(int)value;
- (instancetype)initWithLongLong:(long long)value;
- (instancetype)initWithUnsignedLongLong:(unsigned long long)value;
- (instancetype)initWithDouble:(double)value;
@property(readonly) BOOL boolValue;
@property(readonly) int intValue;
@property(readonly) unsigned int unsignedIntValue;
@property(readonly) unsigned short unsignedShortValue;
@property(readonly) NSInteger integerValue;
@property(readonly) NSUInteger unsignedIntegerValue;
@property(readonly) long long longLongValue;
@property(readonly) unsigned long long unsignedLongLongValue;
@property(readonly) double doubleValue;
@property(readonly) float floatValue;
@property(readonly, copy) NSString* stringValue;
- (NSComparisonResult)compare:(NSNumber*)number;
- (BOOL)isEqualToNumber:(NSNumber*)number;
@end

@interface NSUUID : NSObject <NSCopying>
+ (instancetype)UUID;
- (instancetype)initWithUUIDString:(NSString*)string;
@property(readonly, copy) NSString* UUIDString;
@end

@interface NSNull : NSObject <NSCopying>
+ (NSNull*)null;
@end
