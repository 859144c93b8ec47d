#pragma once

#include <Foundation/NSObject.h>

@interface NSDate : NSObject <NSCopying, NSSecureCoding>
+ (instancetype)date;
+ (instancetype)dateWithTimeIntervalSinceNow:(NSTimeInterval)interval;
+ (instancetype)dateWithTimeIntervalSince1970:(NSTimeInterval)interval;
+ (instancetype)dateWithTimeIntervalSinceReferenceDate:(NSTimeInterval)interval;
@property(class, readonly, copy) NSDate* distantFuture;
@property(class, readonly, copy) NSDate* distantPast;
@property(class, readonly) NSTimeInterval timeIntervalSinceReferenceDate;
- (instancetype)initWithTimeIntervalSinceReferenceDate:(NSTimeInterval)interval;
@property(readonly) NSTimeInterval timeIntervalSinceReferenceDate;
@property(readonly) NSTimeInterval timeIntervalSince1970;
@property(readonly) NSTimeInterval timeIntervalSinceNow;
- (NSTimeInterval)timeIntervalSinceDate:(NSDate*)date;
- (instancetype)dateByAddingTimeInterval:(NSTimeInterval)interval;
- (NSDate*)earlierDate:(NSDate*)date;
- (NSComparisonResult)compare:(NSDate*)date;
- (BOOL)isEqualToDate:(NSDate*)date;
@end

@interface NSFormatter : NSObject
@end

@class NSTimeZone, NSLocale;
@interface NSDateFormatter : NSFormatter
@property(copy) NSString* dateFormat;
@property(copy) NSLocale* locale;
@property(copy) NSTimeZone* timeZone;
- (NSString*)stringFromDate:(NSDate*)date;
- (NSDate*)dateFromString:(NSString*)string;
@end

@interface NSTimeZone : NSObject
+ (instancetype)timeZoneForSecondsFromGMT:(NSInteger)seconds;
@end

@interface NSLocale : NSObject <NSCopying>
@property(class, readonly, copy) NSArray* preferredLanguages;
@property(class, readonly, copy) NSLocale* currentLocale;
+ (instancetype)localeWithLocaleIdentifier:(NSString*)identifier;
@end
