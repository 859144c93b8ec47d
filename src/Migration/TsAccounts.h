#pragma once

#import "Migration/TsAccount.h"

// The accounts of the previous version. Main thread.
@interface TsAccounts : TsPersistence

// The previous version's own file.
+ (TsAccounts*)sharedInstance;

// By "order", then by "username".
- (NSArray*)all;

// The first one that is not `sender`; nil if missing.
- (TsAccount*)findByUsername:(NSString*)username;
- (TsAccount*)findByUsername:(NSString*)username sender:(id)sender;
- (TsAccount*)findByNickname:(NSString*)nickname;
- (TsAccount*)findByNickname:(NSString*)nickname sender:(id)sender;

// Whether any account has one.
- (BOOL)hasBookmarks;

// Whether the account is still there.
- (BOOL)isAccessible:(TsAccount*)account;

@end
