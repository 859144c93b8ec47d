#pragma once

#import <Foundation/Foundation.h>

#include "Base/Ref.h"
#include "Platform/SecretStore.h"

// The passwords of one service in the user's keychain, by account. Nothing is cached: what another program changes is
// seen at once. Main thread only; calls wait for the keychain, and for the person when it has to be opened.
//
// The outcome of reading and writing is a dictionary:
//   "ok?"       NSNumber, a boolean
//   "password"  NSString, or NSNull when there is none; after reading
//   "error"     NSNumber, the keychain's status code; when not ok
@interface TsKeychain : NSObject {
 @private
  Ref<NSString> service_;
  tessaro::platform::SecretStore* store_;
}

@property(nonatomic, readonly) NSString* service;

// Shares its items with the application's previous major version, unless the bundle wants to be kept apart.
+ (TsKeychain*)sharedInstance;

- (instancetype)initWithService:(NSString*)service;

// Of another store than the process's own, which must outlive this object.
- (instancetype)initWithService:(NSString*)service store:(tessaro::platform::SecretStore&)store;

- (NSDictionary*)passwordForAccount:(NSString*)account;

// nil deletes the item. That the item could not be looked up, or not be deleted, is told by the log only.
- (NSDictionary*)setPassword:(NSString*)password forAccount:(NSString*)account;

// Empty when there are none, nil on failure.
- (NSSet*)allAccounts;

// Whether there was one, and it is deleted.
- (BOOL)removePasswordForAccount:(NSString*)account;

// Whether nothing is left.
- (BOOL)removeAllPasswords;

@end
