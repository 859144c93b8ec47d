#pragma once

#include <Foundation/NSObject.h>

using NSExceptionName = NSString*;
FOUNDATION_EXPORT NSExceptionName const NSInvalidArgumentException;
FOUNDATION_EXPORT NSExceptionName const NSInternalInconsistencyException;
FOUNDATION_EXPORT NSExceptionName const NSGenericException;
FOUNDATION_EXPORT NSExceptionName const NSRangeException;

@interface NSException : NSObject <NSCopying>
+ (NSException*)exceptionWithName:(NSExceptionName)name reason:(NSString*)reason userInfo:(NSDictionary*)info;
+ (void)raise:(NSExceptionName)name format:(NSString*)format, ... NS_FORMAT_FUNCTION(2, 3);
- (void)raise;
@property(readonly, copy) NSExceptionName name;
@property(readonly, copy) NSString* reason;
@property(readonly, copy) NSDictionary* userInfo;
@property(readonly, copy) NSArray* callStackSymbols;
@end

using NSUncaughtExceptionHandler = void(NSException* exception);
FOUNDATION_EXPORT NSUncaughtExceptionHandler* NSGetUncaughtExceptionHandler(void);
FOUNDATION_EXPORT void NSSetUncaughtExceptionHandler(NSUncaughtExceptionHandler* handler);
