#pragma once

#import <Foundation/Foundation.h>

#include "Base/Ref.h"
#include "Platform/SecretStore.h"

// The passwords of one service in the user's keychain, by account. Nothing is cached: a change by another program is
// seen at once. Main thread only; calls wait for the keychain, and for the user when it has to be unlocked.
//
// The result of reading and writing is a dictionary:
//   "ok?"       NSNumber, a boolean
//   "password"  NSString, or NSNull without an item; after reading
//   "error"     NSNumber, the keychain's status code; when not ok
@interface TsKeychain : NSObject {
 @private
  Ref<NSString> _service;
  tessaro::platform::SecretStore* _store;
}

@property(nonatomic, readonly) NSString* service;

// Shares its items with the application's previous major version, unless the bundle keeps its own.
+ (TsKeychain*)sharedInstance;

- (instancetype)initWithService:(NSString*)service;

// `store` must outlive this object.
- (instancetype)initWithService:(NSString*)service store:(tessaro::platform::SecretStore&)store;

- (NSDictionary*)passwordForAccount:(NSString*)account;

// nil deletes the item. A failed look-up before writing and a failed deletion are logged, and count as success.
- (NSDictionary*)setPassword:(NSString*)password forAccount:(NSString*)account;

// Empty when there are none, nil on failure.
- (NSSet*)allAccounts;

// Whether an item was found and deleted.
- (BOOL)removePasswordForAccount:(NSString*)account;

// Whether no item is left.
- (BOOL)removeAllPasswords;

@end

// Passwords that live as long as the process, for accounts whose user does not want them stored. Main thread only.
@interface TsTransientKeychain : NSObject {
 @private
  Ref<NSMutableDictionary> _passwordsByAccount;
}

@property(nonatomic, readonly) NSMutableDictionary* passwordsByAccount;

+ (TsTransientKeychain*)sharedInstance;

// nil forgets the account's password.
- (void)setPassword:(NSString*)password forAccount:(NSString*)account;

// nil if missing.
- (NSString*)passwordForAccount:(NSString*)account;

@end
