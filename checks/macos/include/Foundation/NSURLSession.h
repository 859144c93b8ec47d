#pragma once

#include <Foundation/NSDictionary.h>
#include <Foundation/NSURL.h>

@class NSURLSession, NSURLSessionTask, NSURLSessionDataTask, NSOperationQueue, NSURLCache, NSHTTPCookieStorage;

using NSURLRequestCachePolicy = NSUInteger;
enum : NSURLRequestCachePolicy { NSURLRequestReloadIgnoringLocalCacheData = 1 };

@interface NSURLRequest : NSObject <NSCopying, NSMutableCopying>
@property(readonly, copy) NSURL* URL;
@end

@interface NSMutableURLRequest : NSURLRequest
+ (instancetype)requestWithURL:(NSURL*)url;
@property(copy) NSString* HTTPMethod;
@property NSTimeInterval timeoutInterval;
@property BOOL HTTPShouldHandleCookies;
- (void)addValue:(NSString*)value forHTTPHeaderField:(NSString*)field;
- (void)setValue:(NSString*)value forHTTPHeaderField:(NSString*)field;
@end

@interface NSURLResponse : NSObject
@property(readonly, copy) NSURL* URL;
@property(readonly) long long expectedContentLength;
@end

@interface NSHTTPURLResponse : NSURLResponse
@property(readonly) NSInteger statusCode;
@property(readonly, copy) NSDictionary* allHeaderFields;
- (NSString*)valueForHTTPHeaderField:(NSString*)field API_AVAILABLE(macos(10.15));
@end

@interface NSURLSessionConfiguration : NSObject <NSCopying>
@property(class, readonly, strong) NSURLSessionConfiguration* ephemeralSessionConfiguration;
@property NSURLRequestCachePolicy requestCachePolicy;
@property BOOL HTTPShouldSetCookies;
@property(retain) NSHTTPCookieStorage* HTTPCookieStorage;
@property(retain) NSURLCache* URLCache;
@property NSTimeInterval timeoutIntervalForRequest;
@end

enum NSURLSessionResponseDisposition : NSInteger { NSURLSessionResponseCancel = 0, NSURLSessionResponseAllow = 1 };

@protocol NSURLSessionDelegate <NSObject>
@optional
- (void)URLSession:(NSURLSession*)session didBecomeInvalidWithError:(NSError*)error;
@end
@protocol NSURLSessionTaskDelegate <NSURLSessionDelegate>
@optional
- (void)URLSession:(NSURLSession*)session
                          task:(NSURLSessionTask*)task
    willPerformHTTPRedirection:(NSHTTPURLResponse*)response
                    newRequest:(NSURLRequest*)request
             completionHandler:(void (^)(NSURLRequest* request))completionHandler;
- (void)URLSession:(NSURLSession*)session task:(NSURLSessionTask*)task didCompleteWithError:(NSError*)error;
@end
@protocol NSURLSessionDataDelegate <NSURLSessionTaskDelegate>
@optional
- (void)URLSession:(NSURLSession*)session
              dataTask:(NSURLSessionDataTask*)task
    didReceiveResponse:(NSURLResponse*)response
     completionHandler:(void (^)(NSURLSessionResponseDisposition disposition))completionHandler;
- (void)URLSession:(NSURLSession*)session dataTask:(NSURLSessionDataTask*)task didReceiveData:(NSData*)data;
@end

@interface NSURLSession : NSObject
+ (NSURLSession*)sessionWithConfiguration:(NSURLSessionConfiguration*)configuration
                                 delegate:(id<NSURLSessionDelegate>)delegate
                            delegateQueue:(NSOperationQueue*)queue;
- (NSURLSessionDataTask*)dataTaskWithRequest:(NSURLRequest*)request;
- (void)invalidateAndCancel;
@end

@interface NSURLSessionTask : NSObject <NSCopying>
@property(readonly) NSUInteger taskIdentifier;
@property(readonly, copy) NSURLRequest* currentRequest;
@property(readonly, copy) NSURLRequest* originalRequest;
- (void)cancel;
- (void)resume;
- (void)suspend;
@end
@interface NSURLSessionDataTask : NSURLSessionTask
@end
