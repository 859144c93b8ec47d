#pragma once

#import <Foundation/Foundation.h>

#include "Base/Ref.h"

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
