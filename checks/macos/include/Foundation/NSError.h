#pragma once

#include <Foundation/NSObject.h>

using NSErrorDomain = NSString*;
using NSErrorUserInfoKey = NSString*;
FOUNDATION_EXPORT NSErrorDomain const NSCocoaErrorDomain;
FOUNDATION_EXPORT NSErrorDomain const NSPOSIXErrorDomain;
FOUNDATION_EXPORT NSErrorDomain const NSOSStatusErrorDomain;
FOUNDATION_EXPORT NSErrorDomain const NSURLErrorDomain;
FOUNDATION_EXPORT NSErrorUserInfoKey const NSLocalizedDescriptionKey;
FOUNDATION_EXPORT NSErrorUserInfoKey const NSUnderlyingErrorKey;
FOUNDATION_EXPORT NSErrorUserInfoKey const NSFilePathErrorKey;
enum : NSInteger { NSURLErrorCancelled = -999, NSURLErrorTimedOut = -1001 };
enum : NSInteger { NSFileWriteUnknownError = 512, NSUserCancelledError = 3072 };

@interface NSError : NSObject <NSCopying, NSSecureCoding>
+ (instancetype)errorWithDomain:(NSErrorDomain)domain code:(NSInteger)code userInfo:(NSDictionary*)info;
@property(readonly, copy) NSErrorDomain domain;
@property(readonly) NSInteger code;
@property(readonly, copy) NSDictionary* userInfo;
@property(readonly, copy) NSString* localizedDescription;
@property(readonly, copy) NSString* localizedFailureReason;
@end
